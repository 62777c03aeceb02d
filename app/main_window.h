#pragma once

#include "app/main_window_state.h"
#include "app/operations.h"
#include "platform/window_system.h"

#include <cstdint>

namespace tessaro {

/// Answers the messages of the main window: almost every one is a short sequence of operations.
class MainWindow : public WindowProcedure {
public:
    MainWindow(Operations& operations, MainWindowState& state) : m_operations(operations), m_state(state) {}

    bool HandleMessage(const Message& message) override;

private:
    void Create(WindowHandle window);
    void Destroy();
    void Paint();
    void Tick(std::uint32_t timer);
    void Key(std::uint32_t key);
    void ActOnKey(std::uint32_t key);
    void Save();
    void MoveByKey(int axis, double um, const char* text);
    void RefreshAfterKey();

    Operations& m_operations;
    MainWindowState& m_state;
};

} // namespace tessaro
