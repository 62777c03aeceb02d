#include "analysis/background_view.h"

#include "analysis/background_model.h"

namespace tessaro {

int ShowBackground(Screen& screen, const BackgroundGrid& background, bool fitted) {
    std::uint8_t* view = screen.View().screenCopy.get();
    if (view == nullptr)
        return 1; // there was no memory for it at start-up; the window's title says so
    PaintBackground(background, fitted, view);
    screen.ShowBuffer(view);
    return 1;
}

} // namespace tessaro
