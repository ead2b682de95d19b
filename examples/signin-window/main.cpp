// A desktop host: signs a user in and out from a window.

#include <windows.h>

#include "SigninDialog.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    return SigninDialog::run(instance);
}
