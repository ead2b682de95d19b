#include "login/LoginManagerClientCLR.h"

#include "login/hosting/ClrRuntime.h"
#include "login/hosting/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

namespace {

StringArgument argument(const std::wstring& string) {
    return {string.data(), managedLength(string.size())};
}

std::wstring converted(const ManagedString& string, NullRule nullRule) {
    return nullRule == nullIsEmpty ? string.toNativeOrEmpty() : string.toNative();
}

// Calls the host's function, which is the context.
void __stdcall relay(void* hostCallback) {
    reinterpret_cast<void (*)()>(hostCallback)();
}

Callback callback(void (*hostCallback)()) {
    return {hostCallback ? &relay : nullptr, reinterpret_cast<void*>(hostCallback)};
}

}  // namespace

std::int32_t getLangCode(uiLang langIn) {
    const auto value = static_cast<std::int32_t>(langIn);
    return value >= 0 && value <= 13 ? value : 0;
}

statusCode getStatusCode(std::int32_t statCode) {
    return statCode >= 0 && statCode <= 8 ? static_cast<statusCode>(statCode) : statusCodeOther;
}

LoginResponse parseLoginResponse(const ManagedRecord& resp) {
    LoginResponse native;
    if (!resp.present) {
        throw new loginManagerException(statusCodeNoResponse);
    }
    for (const RecordField<LoginResponse>& field : recordFields<LoginResponse>) {
        native.*field.target = converted(resp.*field.source, field.nullRule);
    }
    return native;
}

ManagedClient::~ManagedClient() {
    if (valid() && !processIsEnding()) {
        ManagedFailure dropped;  // a destructor cannot report it
        callManaged(managerMembers().dispose.call, handle, nullptr, nullptr, nullptr, dropped);
    }
}

ManagerHandle createManager(const Callbacks& callbacks, uiLang language) {
    setCallbacks(callbacks);
    const ManagerMembers& members = managerMembers();
    ManagedCreation creation = {callbacks.login.function ? &LoginEventHandler : nullptr,
                                callbacks.logout.function ? &LogoutEventHandler : nullptr, getLangCode(language)};
    ManagedFailure failure;
    if (!callManaged(members.create.call, 0, nullptr, nullptr, &creation, failure)) {
        throwUntranslated(failure);
    }
    return creation.manager;
}

LoginManagerClientCLR::LoginManagerClientCLR(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn) {
    managedClient.adopt(createManager({callback(loginCallBack), callback(logoutCallBack)}, langIn));
}

// Without a manager, a member behaves as if the manager had returned null, except where noted.

LoginResponse LoginManagerClientCLR::record(Member member, const std::wstring* first, const std::wstring* second) {
    ManagedRecord response;
    if (managedClient.valid()) {
        call(member, &response, first, second);
    }
    return parseLoginResponse(response);
}

std::wstring LoginManagerClientCLR::string(Member member, const std::wstring* argument) {
    if (!managedClient.valid() && argument) {
        return *argument;
    }
    ManagedString result;
    if (managedClient.valid()) {
        call(member, &result, argument);
    }
    return converted(result, (unboundMembers.*member).nullRule);
}

void LoginManagerClientCLR::command(Member member, const std::wstring* first, const std::wstring* second) {
    // stopDNMListener is called on an empty handle, too: the managed side then fails as on any null reference.
    if (managedClient.valid() || member == &ManagerMembers::stopDNMListener) {
        call(member, nullptr, first, second);
    }
}

bool LoginManagerClientCLR::test(Member member, const std::wstring& argument) {
    std::int32_t result = 0;
    if (managedClient.valid()) {
        call(member, &result, &argument);
    }
    return result != 0;
}

void LoginManagerClientCLR::call(Member member, void* result, const std::wstring* first, const std::wstring* second) {
    const ManagedMember& row = managerMembers().*member;
    const StringArgument strings[] = {first ? argument(*first) : StringArgument(),
                                      second ? argument(*second) : StringArgument()};
    ManagedFailure failure;
    if (!callManaged(row.call, managedClient.get(), first ? &strings[0] : nullptr, second ? &strings[1] : nullptr,
                     result, failure)) {
        if (failure.isManagerException && row.exceptionRule == translated) {
            throw new loginManagerException(getStatusCode(failure.status));
        }
        throwUntranslated(failure);
    }
}

}  // namespace OrvelLoginClientCLR
