#include "platform/qt/qt_folders.h"
#include "tests/platform/dialogs_contract.h"
#include "tests/platform/folders_contract.h"
#include "tests/platform/message_loop_contract.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/window_drawing_contract.h"
#include "tests/platform/window_system_contract.h"
#include "tests/support/temporary_folder.h"

#include <csignal>
#include <sys/resource.h>

namespace tessaro {
namespace {

class QtFoldersMachine {
public:
    QtFoldersMachine() { getrlimit(RLIMIT_FSIZE, &m_before); }
    ~QtFoldersMachine() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, SIG_DFL);
    }
    QtFoldersMachine(const QtFoldersMachine&) = delete;
    QtFoldersMachine& operator=(const QtFoldersMachine&) = delete;

    std::filesystem::path Base() const { return m_folder.Path(); }

    /// Files end after a few bytes, as on a disk that fills up in the middle of one, be it large or small.
    void FillDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{50, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    QtFolders folders;

private:
    TemporaryFolder m_folder;
    rlimit m_before{};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MessageLoopContract, QtMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WindowSystemContract, QtMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, DialogsContract, QtMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WindowDrawingContract, QtMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, FoldersContract, QtFoldersMachine);

} // namespace tessaro
