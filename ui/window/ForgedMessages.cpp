#include "ui/window/ForgedMessages.h"

bool IsForgedDestruction(HWND window, UINT message) {
    return (message == WM_DESTROY || message == WM_NCDESTROY) && IsWindowVisible(window);
}
