// Exits with the microseconds from the start of the process to the first answered call. Built for either class.

#include "../timing.h"
#include "login/LoginManagerClient.h"

int main() {
    LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    return client.getTenantName().empty() ? -1 : microsecondsSinceStart();
}
