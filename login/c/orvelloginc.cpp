#include "login/c/orvelloginc.h"

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <tuple>

#include "login/LoginManagerClient.h"
#include "login/LoginManagerClientCLR.h"

using Bridge = OrvelLoginClientCLR::LoginManagerClientCLR;

namespace {

// A host's callbacks with their contexts.
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

// The one object that stands for these callbacks. Never freed: an event on another thread may be reading it.
const Callbacks* kept(const Callbacks& callbacks) {
    static std::mutex& guard = *new std::mutex;
    static std::set<Callbacks>& all = *new std::set<Callbacks>;
    const std::lock_guard<std::mutex> lock(guard);
    return &*all.insert(callbacks).first;
}

// The callbacks of the client whose manager was created last. One pointer, so that no event meets one client's function
// and another's context.
std::atomic<const Callbacks*> current{nullptr};

void onLogin() {
    const Callbacks* callbacks = current;
    if (callbacks->login) {
        callbacks->login(callbacks->loginContext);
    }
}

void onLogout() {
    const Callbacks* callbacks = current;
    if (callbacks->logout) {
        callbacks->logout(callbacks->logoutContext);
    }
}

}  // namespace

struct orvellogin_client {
    orvellogin_client(const Callbacks& given, int language)
        : callbacks(kept(given)),
          client(given.login ? &onLogin : nullptr, given.logout ? &onLogout : nullptr, static_cast<uiLang>(language)) {}

    // Whoever makes the bridge makes its callbacks those that count.
    Bridge& bridge() {
        if (!client.bridge) {
            current = callbacks;
        }
        Bridge* const made = client.getLoginMgrClient();
        if (!made) {
            throw std::bad_alloc();
        }
        return *made;
    }

    const Callbacks* const callbacks;
    LoginManagerClient client;
};

namespace {

// What a call with impossible arguments ends in.
struct BadCall {
    const char* what;
};

void require(bool condition, const char* what) {
    if (!condition) {
        throw BadCall{what};
    }
}

// Owns a BSTR until it is handed out.
struct FreeText {
    void operator()(wchar_t* text) const { SysFreeString(text); }
};
using Text = std::unique_ptr<wchar_t, FreeText>;

Text toText(const std::wstring& text) {
    Text copy(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!copy) {
        throw std::bad_alloc();
    }
    return copy;
}

std::wstring toString(const wchar_t* text, int length) {
    require(length >= -1 && (text || length == 0), "a text is null, or its length is below -1");
    return length == -1 ? std::wstring(text) : std::wstring(text, static_cast<std::size_t>(length));
}

// The text of a failure is the one field that a caller may leave out.
constexpr int withoutText = offsetof(orvellogin_failure, text);

// As far as memory reaches: a text that cannot be had is null.
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

void describe(orvellogin_failure* failure, int code, HRESULT hresult, const std::string& text) {
    describe(failure, code, hresult, std::wstring(), std::wstring(text.begin(), text.end()), text.c_str());
}

void reset(orvellogin_failure& failure) {
    failure.code = 0;
    failure.hresult = 0;
    failure.typeName = nullptr;
    failure.message = nullptr;
    if (failure.size > withoutText) {
        failure.text = nullptr;
    }
}

// The only way into the library: what is thrown is reported, and nothing leaves.
orvellogin_result run(orvellogin_failure* failure, void (*call)(void*), void* body) noexcept {
    if (failure) {
        if (failure->size < withoutText) {
            return orvellogin_badCall;
        }
        reset(*failure);
    }
    try {
        call(body);
        return orvellogin_ok;
    } catch (loginManagerException* reported) {
        const std::unique_ptr<loginManagerException> owner(reported);
        describe(failure, owner->code, S_OK, "the login manager reports code " + std::to_string(owner->code));
        return orvellogin_reported;
    } catch (const loginRuntimeException& failed) {
        describe(failure, -1, failed.hresult, failed.typeName, failed.message, failed.what());
        return orvellogin_failed;
    } catch (const BadCall& bad) {
        describe(failure, -1, E_INVALIDARG, bad.what);
        return orvellogin_badCall;
    } catch (const std::bad_alloc&) {
        describe(failure, -1, E_OUTOFMEMORY, "");
        return orvellogin_noMemory;
    } catch (const std::exception& failed) {
        describe(failure, -1, E_FAIL, failed.what());
        return orvellogin_failed;
    }
}

template <class Body>
orvellogin_result guarded(orvellogin_failure* failure, Body body) {
    return run(
        failure, [](void* bodyIn) { (*static_cast<Body*>(bodyIn))(); }, &body);
}

Bridge& bridgeOf(orvellogin_client* client) {
    require(client, "the client is null");
    return client->bridge();
}

enum class Offline { empty, ignored };

// A function whose result is a text.
template <class Member>
orvellogin_result text(orvellogin_client* client, Offline offline, wchar_t** result, orvellogin_failure* failure,
                       Member member) {
    if (result) {
        *result = nullptr;
    }
    return guarded(failure, [&] {
        require(client && result, "the client or the place for the result is null");
        const bool quiet = offline == Offline::empty && client->client.isOrvelOfflineMode();
        *result = toText(quiet ? std::wstring() : member(client->bridge())).release();
    });
}

// One whose result is a record.
template <class Member>
orvellogin_result record(orvellogin_client* client, orvellogin_response* response, orvellogin_failure* failure,
                         Member member) {
    const bool usable = response && response->size >= static_cast<int>(sizeof *response);
    if (usable) {
        *response = {response->size, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    }
    return guarded(failure, [&] {
        require(usable, "the response is null or smaller than its type");
        const LoginResponse user = member(bridgeOf(client));
        Text texts[] = {toText(user.statusDescription), toText(user.userName), toText(user.firstName),
                        toText(user.lastName),          toText(user.rowId),    toText(user.aliasName),
                        toText(user.domainName)};
        wchar_t** field = &response->statusDescription;
        for (Text& each : texts) {
            *field++ = each.release();
        }
    });
}

// One without a result.
template <class Member>
orvellogin_result plain(orvellogin_client* client, orvellogin_failure* failure, Member member) {
    return guarded(failure, [&] { member(bridgeOf(client)); });
}

void freeAll(wchar_t** first, wchar_t** end) {
    for (; first != end; ++first) {
        SysFreeString(*first);
        *first = nullptr;
    }
}

}  // namespace

int ORVELLOGIN_CALL orvellogin_version() {
    return ORVELLOGIN_VERSION;
}

void ORVELLOGIN_CALL orvellogin_free(wchar_t* text) {
    SysFreeString(text);
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
        freeAll(&response->statusDescription, &response->domainName + 1);
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
    });
}

void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client) {
    delete client;
}

orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client, orvellogin_response* response,
                                                   orvellogin_failure* failure) {
    return record(client, response, failure, [](Bridge& bridge) { return bridge.login(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_loginWithPassword(orvellogin_client* client, const wchar_t* userName,
                                                               int userNameLength, const wchar_t* password,
                                                               int passwordLength, orvellogin_response* response,
                                                               orvellogin_failure* failure) {
    return record(client, response, failure, [&](Bridge& bridge) {
        return bridge.login(toString(userName, userNameLength), toString(password, passwordLength));
    });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client, int lastLoginFlag,
                                                             orvellogin_response* response,
                                                             orvellogin_failure* failure) {
    return record(client, response, failure,
                  [&](Bridge& bridge) { return lastLoginFlag ? bridge.login() : bridge.getLoggedInUser(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client, orvellogin_failure* failure) {
    return plain(client, failure, [](Bridge& bridge) { bridge.logout(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client, const wchar_t* targetUrl,
                                                             int targetUrlLength, wchar_t** url,
                                                             orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure,
                [&](Bridge& bridge) { return bridge.formatAccessUrl(toString(targetUrl, targetUrlLength)); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client, wchar_t** token,
                                                            orvellogin_failure* failure) {
    return text(client, Offline::empty, token, failure, [](Bridge& bridge) { return bridge.getAccessToken(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPlatFormURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getPlatFormURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getRegistryURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getRegistryURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getKelpaURL(orvellogin_client* client, wchar_t** url,
                                                         orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getKelpaURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantName(orvellogin_client* client, wchar_t** name,
                                                           orvellogin_failure* failure) {
    return text(client, Offline::empty, name, failure, [](Bridge& bridge) { return bridge.getTenantName(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPassportURL(orvellogin_client* client, wchar_t** url,
                                                            orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getPassportURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getCASCookie(orvellogin_client* client, wchar_t** cookie,
                                                          orvellogin_failure* failure) {
    return text(client, Offline::empty, cookie, failure, [](Bridge& bridge) { return bridge.getCASCookie(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getmyAppsURL(orvellogin_client* client, wchar_t** url,
                                                          orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getmyAppsURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantId(orvellogin_client* client, wchar_t** id,
                                                         orvellogin_failure* failure) {
    return text(client, Offline::empty, id, failure, [](Bridge& bridge) { return bridge.getTenantId(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client, wchar_t** ids,
                                                          orvellogin_failure* failure) {
    return text(client, Offline::empty, ids, failure, [](Bridge& bridge) { return bridge.getTenantIds(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client, wchar_t** url,
                                                         orvellogin_failure* failure) {
    return text(client, Offline::empty, url, failure, [](Bridge& bridge) { return bridge.getSpaceURL(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client, const wchar_t* spaceUrl,
                                                            int spaceUrlLength, wchar_t** ticket,
                                                            orvellogin_failure* failure) {
    return text(client, Offline::empty, ticket, failure,
                [&](Bridge& bridge) { return bridge.getLoginTicket(toString(spaceUrl, spaceUrlLength)); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client, orvellogin_failure* failure) {
    return plain(client, failure, [](Bridge& bridge) { bridge.stopDNMListener(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_DunmoreLoginBrowser(orvellogin_client* client, const wchar_t* server,
                                                                 int serverLength, const wchar_t* clientId,
                                                                 int clientIdLength, orvellogin_failure* failure) {
    return plain(client, failure, [&](Bridge& bridge) {
        bridge.DunmoreLoginBrowser(toString(server, serverLength), toString(clientId, clientIdLength));
    });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client, wchar_t** token,
                                                               orvellogin_failure* failure) {
    return text(client, Offline::ignored, token, failure, [](Bridge& bridge) { return bridge.getDNMAccessToken(); });
}

orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(orvellogin_client* client,
                                                                           const wchar_t* token, int tokenLength,
                                                                           int* expired, orvellogin_failure* failure) {
    if (expired) {
        *expired = 0;
    }
    return guarded(failure, [&] {
        require(expired, "the place for the result is null");
        *expired = bridgeOf(client).isDunmorePlatformTokenExpired(toString(token, tokenLength)) ? 1 : 0;
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
