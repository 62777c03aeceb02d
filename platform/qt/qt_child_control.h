#pragma once

#include "platform/window_system.h"

#include <string>

class QWidget;

namespace tessaro {

/// A label or edit on the client area of a window; belongs to it.
QWidget* MakeChildControl(QWidget& client, const ChildDescription& description);

void SetControlText(QWidget& control, const std::string& text);
std::string ControlText(const QWidget& control);

} // namespace tessaro
