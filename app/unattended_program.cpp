#include "app/unattended_program.h"

#include "app/interruptible_messages.h"
#include "app/number_text.h"
#include "app/printed_message_boxes.h"
#include "app/program.h"
#include "app/unattended_scan.h"
#include "imaging/image_save_listener.h"
#include "scan/scan_listeners.h"

namespace tessaro {
namespace {

/// Counts those that are not saved; passes all on.
class CountedImages : public ImageSaveListener {
public:
    explicit CountedImages(ImageSaveListener* next) : m_next(next) {}

    void ImageSaved(const std::filesystem::path& file) override {
        if (m_next != nullptr)
            m_next->ImageSaved(file);
    }
    void ImageNotSaved(const std::filesystem::path& file, std::string_view reason) override {
        ++m_notSaved;
        if (m_next != nullptr)
            m_next->ImageNotSaved(file, reason);
    }

    void Tell(const WriteText& errors) const {
        if (m_notSaved > 0)
            errors(Formatted("tessaro: %d images could not be saved\n", m_notSaved));
    }

private:
    ImageSaveListener* m_next;
    int m_notSaved = 0;
};

void TellWhyItDidNotBegin(const UnattendedScanRun& run, ScanListener* listener) {
    const std::vector<std::string> reasons = run.WhyItDidNotBegin();
    if (!reasons.empty() && listener != nullptr)
        listener->ScanNotBegun(reasons);
}

} // namespace

int RunUnattendedProgram(Globals& globals, const UserInterface& ui, const Devices& devices,
                         const Listeners& listeners, const UnattendedScan& scan,
                         const UnattendedConsole& console) {
    TerminalStatus terminal(console.output, console.width);
    InterruptibleMessages messages(ui.messages, globals.scan, globals.windows, console.interrupted);
    PrintedMessageBoxes boxes([&](std::string_view line) { terminal.Say(line); },
                              [&] { return messages.LastIsStop(); });
    const UserInterface unattended = {ui.clock,   messages,   ui.windows, ui.dialogs, boxes,
                                      ui.chooser, ui.drawing, ui.folders, ui.pictures};
    UnattendedScanRun run(scan, console.interrupted);
    ScanListeners scanListeners({listeners.scan, &run});
    Listeners all = listeners;
    all.scan = &scanListeners;
    CountedImages images(listeners.images);
    all.images = &images;
    all.status = &terminal;
    RunProgram(globals, unattended, devices, all, &run);
    TellWhyItDidNotBegin(run, listeners.scan);
    run.Tell(terminal, console.errors);
    images.Tell(console.errors);
    return run.ExitCode();
}

} // namespace tessaro
