#include "tests/platform/dialogs_contract.h"
#include "tests/platform/fake_machine.h"
#include "tests/platform/folders_contract.h"
#include "tests/platform/message_loop_contract.h"
#include "tests/platform/window_drawing_contract.h"
#include "tests/platform/window_system_contract.h"

// The fakes keep the same promises as the real adapters, so that tests with them mean something.

namespace tessaro {
namespace {

struct FakeFoldersMachine {
    FakeFoldersMachine() { folders.folders.insert(Base()); }

    static std::filesystem::path Base() { return "/base"; }
    void FillDisk() { folders.failWriting = true; }

    MemoryFolders folders;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, MessageLoopContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowSystemContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, DialogsContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowDrawingContract, FakeMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FoldersContract, FakeFoldersMachine);

} // namespace tessaro
