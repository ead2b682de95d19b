#include "login/LoginManagerClient.h"

#include <new>
#include <utility>

#include "login/LoginManagerClientCLR.h"
#include "login/ManagedPart.h"

using OrvelLoginClientCLR::LoginManagerClientCLR;

LoginManagerClient::LoginManagerClient(void (*loginCallBackIn)(), void (*logoutCallBackIn)(), uiLang langIn)
    : offlineMode(false), loginCallBack(loginCallBackIn), logoutCallBack(logoutCallBackIn), language(langIn) {
    // Once per client and never taken back: each registration does the same, so one more does no harm.
    OrvelLoginClientCLR::registerResolveHandler();
}

LoginManagerClient::~LoginManagerClient() = default;

LoginManagerClientCLR* LoginManagerClient::getLoginMgrClient() {
    if (!bridge) {
        bridge.reset(new (std::nothrow) LoginManagerClientCLR(loginCallBack, logoutCallBack, language));
    }
    return bridge.get();
}

LoginResponse LoginManagerClient::login() {
    LoginManagerClientCLR* client = getLoginMgrClient();
    return client ? client->login() : LoginResponse();
}

LoginResponse LoginManagerClient::login(std::wstring userName, std::wstring password) {
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
    return getLoginMgrClient()->isDunmorePlatformTokenExpired(t);
}

void LoginManagerClient::setOrvelOfflineMode(bool orvelOfflineMode) {
    offlineMode = orvelOfflineMode;
}

bool LoginManagerClient::isOrvelOfflineMode() const {
    return offlineMode;
}
