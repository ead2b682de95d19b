#include "login/c/orvelloginc.h"

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <cstring>
#include <cwchar>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <tuple>

#include "login/LoginManagerClient.h"
#include "login/LoginManagerClientCLR.h"
#include "login/hosting/RuntimeFailure.h"
#include "login/hosting/Wiping.h"

using namespace OrvelLoginClientCLR;

namespace {

// One client's callbacks with their contexts.
struct Callbacks {
    orvellogin_callback login;
    void* loginContext;
    orvellogin_callback logout;
    void* logoutContext;

    bool operator<(const Callbacks& other) const {
        return std::tie(login, loginContext, logout, logoutContext) <
               std::tie(other.login, other.loginContext, other.logout, other.logoutContext);
    }
};

// The one shared copy of these callbacks. Never freed, because an event on another thread may be reading it.
const Callbacks* sharedCallbacks(const Callbacks& callbacks) {
    static std::mutex& guard = *new std::mutex;
    static std::set<Callbacks>& all = *new std::set<Callbacks>;
    const std::lock_guard<std::mutex> lock(guard);
    return &*all.insert(callbacks).first;
}

// The callbacks of the client whose manager was created last. One pointer, so that an event never calls the function of
// one client with the context of another.
std::atomic<const Callbacks*> currentCallbacks{nullptr};

void onLogin() {
    const Callbacks* callbacks = currentCallbacks;
    if (callbacks->login) {
        callbacks->login(callbacks->loginContext);
    }
}

void onLogout() {
    const Callbacks* callbacks = currentCallbacks;
    if (callbacks->logout) {
        callbacks->logout(callbacks->logoutContext);
    }
}

}  // namespace

struct orvellogin_client {
    orvellogin_client(const Callbacks& callbacksIn, int language)
        : callbacks(sharedCallbacks(callbacksIn)),
          client(callbacksIn.login ? &onLogin : nullptr, callbacksIn.logout ? &onLogout : nullptr,
                 static_cast<uiLang>(language)) {}

    // The client's bridge. Creating it makes this client's callbacks the current ones.
    LoginManagerClientCLR& bridge() {
        if (!client.bridge) {
            currentCallbacks = callbacks;
        }
        LoginManagerClientCLR* const created = client.getLoginMgrClient();
        if (!created) {
            throw std::bad_alloc();
        }
        return *created;
    }

    // Stores a text from the manager; a null is stored as an empty text.
    void storeText(wchar_t** target, ManagedString& text) const {
        if (receiver) {
            if (!(text.isNull() ? receiver(target, L"", 0) : receiver(target, text.chars(), text.units()))) {
                throw std::bad_alloc();
            }
            return;
        }
        *target = text.isNull() ? SysAllocStringLen(L"", 0) : text.detachBstr();
        if (!*target) {
            throw std::bad_alloc();
        }
    }

    const Callbacks* const callbacks;
    orvellogin_receiver receiver = nullptr;
    LoginManagerClient client;
};

namespace {

using Field = RecordField<orvellogin_response>;
constexpr auto& fields = recordFields<orvellogin_response>;

// The smallest size of a failure: only its last field, the text, is optional.
constexpr int withoutText = offsetof(orvellogin_failure, text);

void reset(orvellogin_failure& failure) {
    failure.code = 0;
    failure.hresult = 0;
    failure.typeName = nullptr;
    failure.message = nullptr;
    if (failure.size > withoutText) {
        failure.text = nullptr;
    }
}

// Fills in a failure. Never fails itself: a text for which there is no memory is null.
void describe(orvellogin_failure* failure, int code, HRESULT hresult, const std::wstring& typeName,
              const std::wstring& message, const char* text) {
    if (!failure) {
        return;
    }
    failure->code = code;
    failure->hresult = hresult;
    failure->typeName = SysAllocStringLen(typeName.data(), static_cast<UINT>(typeName.size()));
    failure->message = SysAllocStringLen(message.data(), static_cast<UINT>(message.size()));
    if (failure->size > withoutText) {
        failure->text = reinterpret_cast<char*>(SysAllocStringByteLen(text, static_cast<UINT>(std::strlen(text))));
    }
}

// For ASCII texts, whose bytes are also UTF-16 units.
void describe(orvellogin_failure* failure, int code, HRESULT hresult, const std::string& text) {
    describe(failure, code, hresult, std::wstring(), std::wstring(text.begin(), text.end()), text.c_str());
}

orvellogin_result reported(orvellogin_failure* failure, statusCode code) {
    describe(failure, code, S_OK, "the login manager reports code " + std::to_string(code));
    return orvellogin_reported;
}

orvellogin_result failed(orvellogin_failure* failure, const loginRuntimeException& cause) {
    describe(failure, -1, cause.hresult, cause.typeName, cause.message, cause.what());
    return orvellogin_failed;
}

// Thrown for invalid arguments.
struct BadCall {
    const char* what;
};

void require(bool condition, const char* what) {
    if (!condition) {
        throw BadCall{what};
    }
}

// Every function that can fail runs in here. Exceptions become a result and a description; none leaves. The manager's
// failures are data and not thrown, because throwing costs as much as a call.
orvellogin_result runGuarded(orvellogin_failure* failure, orvellogin_result (*call)(void*), void* body) noexcept {
    if (failure) {
        if (failure->size < withoutText) {
            return orvellogin_badCall;
        }
        reset(*failure);
    }
    try {
        return call(body);
    } catch (const loginRuntimeException& cause) {
        return failed(failure, cause);
    } catch (const BadCall& bad) {
        describe(failure, -1, E_INVALIDARG, bad.what);
        return orvellogin_badCall;
    } catch (const std::bad_alloc&) {
        describe(failure, -1, E_OUTOFMEMORY, "");
        return orvellogin_noMemory;
    } catch (const std::exception& other) {
        describe(failure, -1, E_FAIL, other.what());
        return orvellogin_failed;
    }
}

template <class Body>
orvellogin_result guarded(orvellogin_failure* failure, Body body) {
    return runGuarded(failure, [](void* bodyIn) { return (*static_cast<Body*>(bodyIn))(); }, &body);
}

StringArgument argument(const wchar_t* text, int length) {
    require(length >= -1 && (text || length == 0), "a text is null, or its length is below -1");
    return {text, length == -1 ? static_cast<std::int32_t>(std::wcslen(text)) : length};
}

// Calls a member of the manager, which is created if necessary.
orvellogin_result callMember(orvellogin_client& client, Member member, orvellogin_failure* failure, void* result,
                             const StringArgument* first = nullptr, const StringArgument* second = nullptr) {
    const ManagerHandle manager = client.bridge().manager();
    const ManagedMember& row = managerMembers().*member;
    ManagedFailure exception;
    if (callManaged(row.call, manager, first, second, result, exception)) {
        return orvellogin_ok;
    }
    if (exception.isManagerException && row.exceptionRule == translated) {
        return reported(failure, getStatusCode(exception.status));
    }
    return failed(failure, managedFailure(exception.typeName.toNativeOrEmpty(), exception.message.toNativeOrEmpty(),
                                          exception.hresult));
}

// The body of a function that returns a text, and may take one (`first`).
orvellogin_result getText(orvellogin_client* client, Member member, wchar_t** result, orvellogin_failure* failure,
                          const StringArgument* first = nullptr) {
    require(client && result, "the client or the place for the result is null");
    ManagedString text;
    const ManagedMember& row = unboundMembers.*member;
    if (row.offlineRule == calledOffline || !client->client.isOrvelOfflineMode()) {
        const orvellogin_result outcome = callMember(*client, member, failure, &text, first);
        if (outcome != orvellogin_ok) {
            return outcome;
        }
        if (text.isNull() && row.nullRule == nullFails) {
            return failed(failure, nullStringFailure());
        }
    }
    client->storeText(result, text);
    return orvellogin_ok;
}

// Sets a result to null, so that it is null after a failure. With a receiver the place belongs to the caller and is not
// touched.
void reset(const orvellogin_client* client, wchar_t** result) {
    if (result && !(client && client->receiver)) {
        *result = nullptr;
    }
}

void reset(const orvellogin_client* client, orvellogin_response* response) {
    if (response && response->size >= static_cast<int>(sizeof *response)) {
        for (const Field& field : fields) {
            reset(client, &(response->*field.target));
        }
    }
}

orvellogin_result textFunction(orvellogin_client* client, Member member, wchar_t** result,
                               orvellogin_failure* failure) {
    reset(client, result);
    return guarded(failure, [&] { return getText(client, member, result, failure); });
}

orvellogin_result textOfTextFunction(orvellogin_client* client, Member member, const wchar_t* text, int length,
                                     wchar_t** result, orvellogin_failure* failure) {
    reset(client, result);
    return guarded(failure, [&] {
        const StringArgument first = argument(text, length);
        return getText(client, member, result, failure, &first);
    });
}

// A function that returns nothing.
orvellogin_result callWithoutResult(orvellogin_client* client, Member member, orvellogin_failure* failure) {
    return guarded(failure, [&] {
        require(client, "the client is null");
        return callMember(*client, member, failure, nullptr);
    });
}

void clear(orvellogin_response& response) {
    for (const Field& field : fields) {
        SysFreeString(response.*field.target);
        response.*field.target = nullptr;
    }
}

orvellogin_result storeRecord(const orvellogin_client& client, ManagedRecord& from, orvellogin_response& to,
                              orvellogin_failure* failure) {
    if (!from.present) {
        return reported(failure, statusCodeNoResponse);
    }
    // Checked before anything is stored, so that a failure leaves every field null.
    for (const Field& field : fields) {
        if ((from.*field.source).isNull() && field.nullRule == nullFails) {
            return failed(failure, nullStringFailure());
        }
    }
    try {
        for (const Field& field : fields) {
            client.storeText(&(to.*field.target), from.*field.source);
        }
    } catch (const std::bad_alloc&) {
        if (!client.receiver) {
            clear(to);
        }
        throw;
    }
    return orvellogin_ok;
}

// The body of a function that returns a record.
orvellogin_result getRecord(orvellogin_client* client, Member member, orvellogin_response* response,
                            orvellogin_failure* failure, const StringArgument* first = nullptr,
                            const StringArgument* second = nullptr) {
    require(client, "the client is null");
    require(response && response->size >= static_cast<int>(sizeof *response), "the response is null or too small");
    ManagedRecord record;
    const orvellogin_result outcome = callMember(*client, member, failure, &record, first, second);
    return outcome == orvellogin_ok ? storeRecord(*client, record, *response, failure) : outcome;
}

}  // namespace

int ORVELLOGIN_CALL orvellogin_version() {
    return ORVELLOGIN_VERSION;
}

void ORVELLOGIN_CALL orvellogin_free(wchar_t* text) {
    if (text) {  // wiped, because it may be a token, a cookie or a ticket
        wipe(text, SysStringLen(text));
        SysFreeString(text);
    }
}

void ORVELLOGIN_CALL orvellogin_clearFailure(orvellogin_failure* failure) {
    if (failure && failure->size >= withoutText) {
        SysFreeString(failure->typeName);
        SysFreeString(failure->message);
        if (failure->size > withoutText) {
            SysFreeString(reinterpret_cast<wchar_t*>(failure->text));
        }
        reset(*failure);
    }
}

void ORVELLOGIN_CALL orvellogin_clearResponse(orvellogin_response* response) {
    if (response && response->size >= static_cast<int>(sizeof *response)) {
        clear(*response);
    }
}

orvellogin_result ORVELLOGIN_CALL orvellogin_create(orvellogin_callback onLogin, void* loginContext,
                                                    orvellogin_callback onLogout, void* logoutContext, int language,
                                                    orvellogin_client** client, orvellogin_failure* failure) {
    if (client) {
        *client = nullptr;
    }
    return guarded(failure, [&] {
        require(client, "the place for the client is null");
        *client = new orvellogin_client({onLogin, loginContext, onLogout, logoutContext}, language);
        return orvellogin_ok;
    });
}

void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client) {
    delete client;
}

void ORVELLOGIN_CALL orvellogin_setReceiver(orvellogin_client* client, orvellogin_receiver receiver) {
    if (client) {
        client->receiver = receiver;
    }
}

orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client, orvellogin_response* response,
                                                   orvellogin_failure* failure) {
    reset(client, response);
    return guarded(failure, [&] { return getRecord(client, &ManagerMembers::login, response, failure); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_loginWithPassword(orvellogin_client* client, const wchar_t* userName,
                                                               int userNameLength, const wchar_t* password,
                                                               int passwordLength, orvellogin_response* response,
                                                               orvellogin_failure* failure) {
    reset(client, response);
    return guarded(failure, [&] {
        const StringArgument user = argument(userName, userNameLength);
        const StringArgument secret = argument(password, passwordLength);
        return getRecord(client, &ManagerMembers::loginWithPassword, response, failure, &user, &secret);
    });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client, int lastLoginFlag,
                                                             orvellogin_response* response,
                                                             orvellogin_failure* failure) {
    reset(client, response);
    const Member member = lastLoginFlag ? &ManagerMembers::login : &ManagerMembers::getLoggedInUser;
    return guarded(failure, [&] { return getRecord(client, member, response, failure); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client, orvellogin_failure* failure) {
    return callWithoutResult(client, &ManagerMembers::Logout, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client, const wchar_t* targetUrl,
                                                             int targetUrlLength, wchar_t** url,
                                                             orvellogin_failure* failure) {
    return textOfTextFunction(client, &ManagerMembers::formatAccessURL, targetUrl, targetUrlLength, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client, wchar_t** token,
                                                            orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getAccessToken, token, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPlatFormURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getPlatformURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getRegistryURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getRegistryURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getKelpaURL(orvellogin_client* client, wchar_t** url,
                                                         orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getKelpaURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantName(orvellogin_client* client, wchar_t** name,
                                                           orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getTenantName, name, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPassportURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getPassportURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getCASCookie(orvellogin_client* client, wchar_t** cookie,
                                                          orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getCASCookie, cookie, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getmyAppsURL(orvellogin_client* client, wchar_t** url,
                                                          orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getmyAppsURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantId(orvellogin_client* client, wchar_t** id,
                                                         orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getTenantId, id, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client, wchar_t** ids,
                                                          orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getTenantIds, ids, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client, wchar_t** url,
                                                         orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getSpaceURL, url, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client, const wchar_t* spaceUrl,
                                                            int spaceUrlLength, wchar_t** ticket,
                                                            orvellogin_failure* failure) {
    return textOfTextFunction(client, &ManagerMembers::getLoginTicket, spaceUrl, spaceUrlLength, ticket, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client, orvellogin_failure* failure) {
    return callWithoutResult(client, &ManagerMembers::stopDNMListener, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_DunmoreLoginBrowser(orvellogin_client* client, const wchar_t* server,
                                                                 int serverLength, const wchar_t* clientId,
                                                                 int clientIdLength, orvellogin_failure* failure) {
    return guarded(failure, [&] {
        require(client, "the client is null");
        const StringArgument first = argument(server, serverLength);
        const StringArgument second = argument(clientId, clientIdLength);
        return callMember(*client, &ManagerMembers::DunmoreLoginBrowser, failure, nullptr, &first, &second);
    });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client, wchar_t** token,
                                                               orvellogin_failure* failure) {
    return textFunction(client, &ManagerMembers::getDNMAccessToken, token, failure);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(orvellogin_client* client,
                                                                           const wchar_t* token, int tokenLength,
                                                                           int* expired, orvellogin_failure* failure) {
    if (expired) {
        *expired = 0;
    }
    return guarded(failure, [&] {
        require(client && expired, "the client or the place for the result is null");
        const StringArgument first = argument(token, tokenLength);
        return callMember(*client, &ManagerMembers::isDunmorePlatformTokenExpired, failure, expired, &first);
    });
}

void ORVELLOGIN_CALL orvellogin_setOrvelOfflineMode(orvellogin_client* client, int offline) {
    if (client) {
        client->client.setOrvelOfflineMode(offline != 0);
    }
}

int ORVELLOGIN_CALL orvellogin_isOrvelOfflineMode(const orvellogin_client* client) {
    return client && client->client.isOrvelOfflineMode() ? 1 : 0;
}
