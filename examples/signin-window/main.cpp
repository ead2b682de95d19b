// Signs a user in and out from a window: what a desktop host looks like.

#include <windows.h>

#include "SigninDialog.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    return SigninDialog::run(instance);
}
