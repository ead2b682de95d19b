// The exit status is the time from process start to the first answered call, in microseconds. Built with both classes.

#include "../timing.h"
#include "login/LoginManagerClient.h"

int main() {
    LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    return client.getTenantName().empty() ? -1 : microsecondsSinceStart();
}
