#include "login/LoginManagerClient.h"

#include <memory>
#include <new>

#include "login/LoginManagerClientCLR.h"
#include "login/boundary/ManagedPart.h"
#include "login/hosting/Wiping.h"

using OrvelLoginClientCLR::emptyOffline;
using OrvelLoginClientCLR::LoginManagerClientCLR;
using OrvelLoginClientCLR::ManagerMembers;
using OrvelLoginClientCLR::Member;
using OrvelLoginClientCLR::WipedAtEnd;

LoginManagerClient::LoginManagerClient(void (*loginCallBackIn)(), void (*logoutCallBackIn)(), uiLang langIn)
    : offlineMode(false),
      bridge(nullptr),
      loginCallBack(loginCallBackIn),
      logoutCallBack(logoutCallBackIn),
      language(langIn) {
    // Once per client and never removed: further registrations are harmless, but removing one would break other
    // clients.
    OrvelLoginClientCLR::registerResolveHandler();
}

LoginManagerClient::~LoginManagerClient() {
    const std::unique_ptr<LoginManagerClientCLR> owner(bridge.load());
}

LoginManagerClientCLR* LoginManagerClient::getLoginMgrClient() {
    if (LoginManagerClientCLR* made = bridge.load()) {
        return made;
    }
    std::unique_ptr<LoginManagerClientCLR> made(new (std::nothrow)
                                                    LoginManagerClientCLR(loginCallBack, logoutCallBack, language));
    LoginManagerClientCLR* stored = nullptr;
    if (bridge.compare_exchange_strong(stored, made.get())) {
        return made.release();
    }
    // Another thread's first call was faster. This bridge is leaked on purpose: managers may share a sign-in, so
    // disposing this one could affect the one in use.
    static_cast<void>(made.release());
    return stored;
}

std::wstring LoginManagerClient::string(Member member, const std::wstring* argument) {
    // From the unbound row, because binding it would load the outside assemblies.
    const bool empty = offlineMode && (OrvelLoginClientCLR::unboundMembers.*member).offlineRule == emptyOffline;
    return empty ? std::wstring() : getLoginMgrClient()->string(member, argument);
}

// Only the members that sign in and out check for a null bridge (a failed allocation), because a host calls one of them
// first; the others are called after a sign-in, when the bridge exists.

LoginResponse LoginManagerClient::login() {
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->record(&ManagerMembers::login) : LoginResponse();
}

LoginResponse LoginManagerClient::login(std::wstring userName, std::wstring password) {
    const WipedAtEnd wiped(password);
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->record(&ManagerMembers::loginWithPassword, &userName, &password) : LoginResponse();
}

LoginResponse LoginManagerClient::getLoggedInUser(bool LastLoginFlag) {
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->record(LastLoginFlag ? &ManagerMembers::login : &ManagerMembers::getLoggedInUser)
                  : LoginResponse();
}

void LoginManagerClient::logout() {
    if (LoginManagerClientCLR* client = getLoginMgrClient()) {
        client->command(&ManagerMembers::Logout);
    }
}

std::wstring LoginManagerClient::formatAccessUrl(std::wstring targeturl) {
    return string(&ManagerMembers::formatAccessURL, &targeturl);
}

std::wstring LoginManagerClient::getAccessToken() {
    return string(&ManagerMembers::getAccessToken);
}

std::wstring LoginManagerClient::getPlatFormURL() {
    return string(&ManagerMembers::getPlatformURL);
}

std::wstring LoginManagerClient::getRegistryURL() {
    return string(&ManagerMembers::getRegistryURL);
}

std::wstring LoginManagerClient::getKelpaURL() {
    return string(&ManagerMembers::getKelpaURL);
}

std::wstring LoginManagerClient::getTenantName() {
    return string(&ManagerMembers::getTenantName);
}

std::wstring LoginManagerClient::getPassportURL() {
    return string(&ManagerMembers::getPassportURL);
}

std::wstring LoginManagerClient::getCASCookie() {
    return string(&ManagerMembers::getCASCookie);
}

std::wstring LoginManagerClient::getmyAppsURL() {
    return string(&ManagerMembers::getmyAppsURL);
}

std::wstring LoginManagerClient::getTenantId() {
    return string(&ManagerMembers::getTenantId);
}

std::wstring LoginManagerClient::getTenantIds() {
    return string(&ManagerMembers::getTenantIds);
}

std::wstring LoginManagerClient::getLoginTicket(std::wstring spaceurl) {
    return string(&ManagerMembers::getLoginTicket, &spaceurl);
}

std::wstring LoginManagerClient::getSpaceURL() {
    return string(&ManagerMembers::getSpaceURL);
}

void LoginManagerClient::stopDNMListener() {
    getLoginMgrClient()->command(&ManagerMembers::stopDNMListener);
}

void LoginManagerClient::DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId) {
    getLoginMgrClient()->command(&ManagerMembers::DunmoreLoginBrowser, &serverDNM, &clientId);
}

std::wstring LoginManagerClient::getDNMAccessToken() {
    return string(&ManagerMembers::getDNMAccessToken);
}

bool LoginManagerClient::isDunmorePlatformTokenExpired(std::wstring t) {
    const WipedAtEnd wiped(t);
    return getLoginMgrClient()->test(&ManagerMembers::isDunmorePlatformTokenExpired, t);
}

void LoginManagerClient::setOrvelOfflineMode(bool orvelOfflineMode) {
    offlineMode = orvelOfflineMode;
}

bool LoginManagerClient::isOrvelOfflineMode() const {
    return offlineMode;
}
