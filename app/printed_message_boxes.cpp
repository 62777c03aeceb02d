#include "app/printed_message_boxes.h"

namespace tessaro {

bool PrintedMessageBoxes::AskYesNo([[maybe_unused]] WindowHandle owner, const std::string& text,
                                   const std::string& caption) {
    const bool yes = m_stopIsOrdered();
    m_print(caption + ": " + text + (yes ? " [Yes]" : " [No]"));
    return yes;
}

void PrintedMessageBoxes::ShowWarning([[maybe_unused]] WindowHandle owner, const std::string& text,
                                      const std::string& caption) {
    m_print(caption + ": " + text + " [OK]");
}

} // namespace tessaro
