#include "login/LoginManagerClientCLR.h"

#include "login/hosting/ClrRuntime.h"
#include "login/hosting/LibraryFile.h"
#include "login/hosting/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

void (*myLoginHandler)() = nullptr;
void (*myLogoutHandler)() = nullptr;

namespace {

// The control of the thread that created the last bridge. Callbacks run with it on threads that the runtime created,
// which have no control of the host's.
FloatingPointControl hostControl = FloatingPointControl::current();

TextArgument argument(const std::wstring& text) {
    return {text.data(), managedLength(text.size())};
}

// Calls a managed member. Every exception becomes a loginRuntimeException, even the manager's own.
void callUntranslated(const ManagedMember& member, ManagerHandle manager, void* result,
                      const TextArgument* first = nullptr, const TextArgument* second = nullptr) {
    ManagedFailure failure;
    if (!callManaged(member.call, manager, first, second, result, failure)) {
        throwUntranslated(failure);
    }
}

// Calls a managed member. The manager's own exception becomes a loginManagerException.
void callTranslated(const ManagedMember& member, ManagerHandle manager, void* result,
                    const TextArgument* first = nullptr, const TextArgument* second = nullptr) {
    ManagedFailure failure;
    if (!callManaged(member.call, manager, first, second, result, failure)) {
        if (failure.isManagerException) {
            throw new loginManagerException(getStatusCode(failure.status));
        }
        throwUntranslated(failure);
    }
}

void raise(void (*handler)()) noexcept {
    if (handler) {
        const HostCodeScope host(hostControl);
        handler();
    }
}

}  // namespace

void LoginEventHandler() noexcept {
    raise(myLoginHandler);
}

void LogoutEventHandler() noexcept {
    raise(myLogoutHandler);
}

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
    native.statusDescription = resp.statusDescription.toNative();
    native.userName = resp.userName.toNative();
    native.firstName = resp.firstName.toNative();
    native.lastName = resp.lastName.toNative();
    native.rowId = resp.rowId.toNative();
    native.aliasName = resp.aliasName.toNative();
    native.domainName = resp.domainName.toNativeOrEmpty();
    return native;
}

ManagedClient::~ManagedClient() {
    if (valid() && !processIsEnding()) {
        ManagedFailure dropped;  // a destructor cannot report it
        callManaged(managerMembers().dispose.call, handle, nullptr, nullptr, nullptr, dropped);
    }
}

LoginManagerClientCLR::LoginManagerClientCLR(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn) {
    myLoginHandler = loginCallBack;
    myLogoutHandler = logoutCallBack;
    hostControl = FloatingPointControl::current();
    const ManagerMembers& members = managerMembers();
    // After binding, so that a library without a usable manager can still be unloaded; but before the manager exists,
    // because its events call into this library.
    pinLibrary();
    ManagedCreation creation = {loginCallBack ? &LoginEventHandler : nullptr,
                                logoutCallBack ? &LogoutEventHandler : nullptr, getLangCode(langIn)};
    callUntranslated(members.create, 0, &creation);
    managedClient.adopt(creation.manager);
}

// Without a manager, each member below behaves as if the manager had returned null.

LoginResponse LoginManagerClientCLR::login() {
    ManagedRecord response;
    if (managedClient.valid()) {
        callTranslated(managerMembers().login, managedClient.get(), &response);
    }
    return parseLoginResponse(response);
}

LoginResponse LoginManagerClientCLR::login(const std::wstring& userName, const std::wstring& password) {
    const TextArgument user = argument(userName);
    const TextArgument secret = argument(password);
    ManagedRecord response;
    if (managedClient.valid()) {
        callTranslated(managerMembers().loginWithPassword, managedClient.get(), &response, &user, &secret);
    }
    return parseLoginResponse(response);
}

LoginResponse LoginManagerClientCLR::getLoggedInUser() {
    ManagedRecord response;
    if (managedClient.valid()) {
        callTranslated(managerMembers().getLoggedInUser, managedClient.get(), &response);
    }
    return parseLoginResponse(response);
}

void LoginManagerClientCLR::logout() {
    if (managedClient.valid()) {
        callTranslated(managerMembers().Logout, managedClient.get(), nullptr);
    }
}

std::wstring LoginManagerClientCLR::getAccessToken() {
    ManagedString token;
    if (managedClient.valid()) {
        callTranslated(managerMembers().getAccessToken, managedClient.get(), &token);
    }
    return token.toNativeOrEmpty();
}

std::wstring LoginManagerClientCLR::formatAccessUrl(std::wstring targeturl) {
    const TextArgument url = argument(targeturl);
    if (!managedClient.valid()) {
        return targeturl;
    }
    ManagedString formatted;
    callTranslated(managerMembers().formatAccessURL, managedClient.get(), &formatted, &url);
    return formatted.toNative();
}

std::wstring LoginManagerClientCLR::plainGetter(const ManagedMember& member) {
    ManagedString text;
    if (managedClient.valid()) {
        callUntranslated(member, managedClient.get(), &text);
    }
    return text.toNativeOrEmpty();
}

std::wstring LoginManagerClientCLR::getPlatFormURL() {
    return plainGetter(managerMembers().getPlatformURL);
}

std::wstring LoginManagerClientCLR::getRegistryURL() {
    return plainGetter(managerMembers().getRegistryURL);
}

std::wstring LoginManagerClientCLR::getPassportURL() {
    return plainGetter(managerMembers().getPassportURL);
}

std::wstring LoginManagerClientCLR::getCASCookie() {
    return plainGetter(managerMembers().getCASCookie);
}

std::wstring LoginManagerClientCLR::getmyAppsURL() {
    return plainGetter(managerMembers().getmyAppsURL);
}

std::wstring LoginManagerClientCLR::getKelpaURL() {
    return plainGetter(managerMembers().getKelpaURL);
}

std::wstring LoginManagerClientCLR::getTenantName() {
    return plainGetter(managerMembers().getTenantName);
}

std::wstring LoginManagerClientCLR::getTenantId() {
    return plainGetter(managerMembers().getTenantId);
}

std::wstring LoginManagerClientCLR::getTenantIds() {
    return plainGetter(managerMembers().getTenantIds);
}

std::wstring LoginManagerClientCLR::getSpaceURL() {
    return plainGetter(managerMembers().getSpaceURL);
}

std::wstring LoginManagerClientCLR::getLoginTicket(std::wstring spaceurl) {
    if (!managedClient.valid()) {
        return spaceurl;
    }
    const TextArgument url = argument(spaceurl);
    ManagedString ticket;
    callUntranslated(managerMembers().getLoginTicket, managedClient.get(), &ticket, &url);
    return ticket.toNative();
}

void LoginManagerClientCLR::stopDNMListener() {
    // Called on an empty handle too: the managed side then fails as on any null reference.
    callUntranslated(managerMembers().stopDNMListener, managedClient.get(), nullptr);
}

// The manager's remaining members are static and would work without an object; they are called only with one.

void LoginManagerClientCLR::DunmoreLoginBrowser(const std::wstring& serverDNM, const std::wstring& clientId) {
    if (managedClient.valid()) {
        const TextArgument server = argument(serverDNM);
        const TextArgument client = argument(clientId);
        callTranslated(managerMembers().DunmoreLoginBrowser, managedClient.get(), nullptr, &server, &client);
    }
}

std::wstring LoginManagerClientCLR::getDNMAccessToken() {
    ManagedString token;
    if (managedClient.valid()) {
        callUntranslated(managerMembers().getDNMAccessToken, managedClient.get(), &token);
    }
    return token.toNative();
}

bool LoginManagerClientCLR::isDunmorePlatformTokenExpired(const std::wstring& t) {
    std::int32_t expired = 0;
    if (managedClient.valid()) {
        const TextArgument token = argument(t);
        callUntranslated(managerMembers().isDunmorePlatformTokenExpired, managedClient.get(), &expired, &token);
    }
    return expired != 0;
}

}  // namespace OrvelLoginClientCLR
