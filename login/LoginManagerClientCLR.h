#pragma once

#include <string>

#include "login/Callbacks.h"
#include "login/LoginResponse.h"
#include "login/boundary/ManagedPart.h"
#include "login/loginManagerException.h"
#include "login/uiLang.h"

/// The bridge between the native client and the managed login manager.
namespace OrvelLoginClientCLR {

/// The manager's number of a language: 0 to 13 are unchanged, anything else becomes 0.
std::int32_t getLangCode(uiLang langIn);

/// The native code of the manager's status: 0 to 8 are unchanged, anything else becomes 8.
statusCode getStatusCode(std::int32_t statCode);

/// Converts a response record. Throws `loginManagerException*` with code 6 if there is no record, and
/// `loginRuntimeException` if a field other than `domainName` is null.
LoginResponse parseLoginResponse(const ManagedRecord& resp);

/// Owns a managed manager. The destructor disposes and releases it, except while the process is ending, when the
/// runtime must not be called.
class ManagedClient {
public:
    ManagedClient() = default;
    ManagedClient(const ManagedClient&) = delete;
    ManagedClient& operator=(const ManagedClient&) = delete;
    ~ManagedClient();

    bool valid() const { return handle != 0; }
    ManagerHandle get() const { return handle; }
    void adopt(ManagerHandle created) { handle = created; }

private:
    ManagerHandle handle = 0;
};

/// Creates a manager, for whose events `callbacks` are called from now on. Throws `loginRuntimeException`.
ManagerHandle createManager(const Callbacks& callbacks, uiLang language);

/// The bridge to one managed login manager. Each function calls a member of one shape; the member's row says what
/// becomes of the manager's exception and of a null. `first`, `second`, `argument`: the strings that the member takes.
class LoginManagerClientCLR {
public:
    LoginManagerClientCLR(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn);

    LoginResponse record(Member member, const std::wstring* first = nullptr, const std::wstring* second = nullptr);
    std::wstring string(Member member, const std::wstring* argument = nullptr);
    void command(Member member, const std::wstring* first = nullptr, const std::wstring* second = nullptr);
    bool test(Member member, const std::wstring& argument);

private:
    void call(Member member, void* result, const std::wstring* first = nullptr, const std::wstring* second = nullptr);

    ManagedClient managedClient;
};

}  // namespace OrvelLoginClientCLR
