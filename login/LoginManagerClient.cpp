#include "login/LoginManagerClient.h"

#include <memory>
#include <new>
#include <utility>

#include "login/LoginManagerClientCLR.h"
#include "login/boundary/ManagedPart.h"
#include "login/hosting/Wiping.h"

using OrvelLoginClientCLR::LoginManagerClientCLR;
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
    made.release();
    return stored;
}

// Only the members that sign in and out check for a null bridge (a failed allocation), because a host calls one of them
// first; the others are called after a sign-in, when the bridge exists.

LoginResponse LoginManagerClient::login() {
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->login() : LoginResponse();
}

LoginResponse LoginManagerClient::login(std::wstring userName, std::wstring password) {
    const WipedAtEnd wiped(password);
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->login(userName, password) : LoginResponse();
}

LoginResponse LoginManagerClient::getLoggedInUser(bool LastLoginFlag) {
    LoginManagerClientCLR* client = getLoginMgrClient();
    if (!client) {
        return LoginResponse();
    }
    return LastLoginFlag ? client->login() : client->getLoggedInUser();
}

void LoginManagerClient::logout() {
    if (LoginManagerClientCLR* client = getLoginMgrClient()) {
        client->logout();
    }
}

std::wstring LoginManagerClient::formatAccessUrl(std::wstring targeturl) {
    return offlineMode ? std::wstring() : getLoginMgrClient()->formatAccessUrl(std::move(targeturl));
}

std::wstring LoginManagerClient::getAccessToken() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getAccessToken();
}

std::wstring LoginManagerClient::getPlatFormURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getPlatFormURL();
}

std::wstring LoginManagerClient::getRegistryURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getRegistryURL();
}

std::wstring LoginManagerClient::getKelpaURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getKelpaURL();
}

std::wstring LoginManagerClient::getTenantName() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getTenantName();
}

std::wstring LoginManagerClient::getPassportURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getPassportURL();
}

std::wstring LoginManagerClient::getCASCookie() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getCASCookie();
}

std::wstring LoginManagerClient::getmyAppsURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getmyAppsURL();
}

std::wstring LoginManagerClient::getTenantId() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getTenantId();
}

std::wstring LoginManagerClient::getTenantIds() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getTenantIds();
}

std::wstring LoginManagerClient::getLoginTicket(std::wstring spaceurl) {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getLoginTicket(std::move(spaceurl));
}

std::wstring LoginManagerClient::getSpaceURL() {
    return offlineMode ? std::wstring() : getLoginMgrClient()->getSpaceURL();
}

void LoginManagerClient::stopDNMListener() {
    getLoginMgrClient()->stopDNMListener();
}

void LoginManagerClient::DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId) {
    getLoginMgrClient()->DunmoreLoginBrowser(serverDNM, clientId);
}

std::wstring LoginManagerClient::getDNMAccessToken() {
    return getLoginMgrClient()->getDNMAccessToken();
}

bool LoginManagerClient::isDunmorePlatformTokenExpired(std::wstring t) {
    const WipedAtEnd wiped(t);
    return getLoginMgrClient()->isDunmorePlatformTokenExpired(t);
}

void LoginManagerClient::setOrvelOfflineMode(bool orvelOfflineMode) {
    offlineMode = orvelOfflineMode;
}

bool LoginManagerClient::isOrvelOfflineMode() const {
    return offlineMode;
}
