#include "login/c/orvelloginc.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>

#include "login/Callbacks.h"
#include "login/LoginManagerClientCLR.h"
#include "login/boundary/ManagedPart.h"
#include "login/hosting/RuntimeFailure.h"
#include "login/hosting/Wiping.h"

using namespace OrvelLoginClientCLR;

namespace {

// A string argument as the caller passes it.
struct Input {
    const wchar_t* units;
    int length;
};

// The result of a member that returns a number, or nothing.
struct ManagedNumber {
    std::int32_t value = 0;
};

// Thrown for invalid arguments.
struct BadCall {
    const char* what;
};

// Thrown for an error from the login manager, where it is not worth while to return it.
struct ManagerError {
    statusCode code;
};

void require(bool condition, const char* what) {
    if (!condition) {
        throw BadCall{what};
    }
}

StringArgument checked(const Input& input) {
    require(input.length >= -1 && (input.units || input.length == 0), "a string is null, or its length is below -1");
    return {input.units, input.length == -1 ? managedLength(std::wcslen(input.units)) : input.length};
}

// What a null from the manager becomes, if it is not an empty string.

void refuseNull(const ManagedString& received, NullRule rule) {
    if (received.isNull() && rule == nullFails) {
        throw nullStringFailure();
    }
}

void refuseNull(const ManagedRecord& received, NullRule) {
    if (!received.present) {
        throw ManagerError{statusCodeNoResponse};
    }
    for (const auto& field : recordFields<orvellogin_response>) {
        refuseNull(received.*field.source, field.nullRule);
    }
}

void refuseNull(const ManagedNumber&, NullRule) {}

constexpr orvellogin_string emptyString = {L"", 0};

orvellogin_string view(const ManagedString& string) {
    return string.isNull() ? emptyString : orvellogin_string{string.chars(), string.units()};
}

orvellogin_string view(const std::wstring& string) {
    return {string.c_str(), static_cast<int>(string.size())};
}

// What a result is after a failure.

void reset(orvellogin_string& result) {
    result = emptyString;
}

void reset(const orvellogin_response*& result) {
    result = nullptr;
}

void reset(int& result) {
    result = 0;
}

constexpr orvellogin_failure noFailure = {
    sizeof(orvellogin_failure), ORVELLOGIN_OK, -1, S_OK, emptyString, emptyString, ""};
constexpr orvellogin_failure noClient = {
    sizeof(orvellogin_failure),  ORVELLOGIN_BAD_CALL, -1, E_INVALIDARG, emptyString,
    {L"the client is null", 18}, "the client is null"};

// The details of a failure, and the structure that shows them to the caller. Setting them never fails: a string that
// cannot be allocated stays empty.
class Failure {
public:
    ~Failure() { clear(); }

    void set(orvellogin_result result, loginRuntimeException& cause) noexcept {
        typeName = std::move(cause.typeName);
        message = std::move(cause.message);
        show(result, -1, cause.hresult, cause.what());
    }

    // For ASCII messages, whose bytes are also UTF-16 code units.
    void set(orvellogin_result result, int code, HRESULT hresult, const char* what) noexcept {
        try {
            message.assign(what, what + std::strlen(what));
        } catch (const std::bad_alloc&) {}
        show(result, code, hresult, what);
    }

    void clear() noexcept {
        if (shown.result == ORVELLOGIN_OK) {
            return;
        }
        wipe(message);  // it may quote a token
        wipe(text);
        typeName.clear();
        shown = noFailure;
    }

    const orvellogin_failure& get() const { return shown; }

private:
    template <class String>
    static void wipe(String& string) noexcept {
        OrvelLoginClientCLR::wipe(&string[0], string.size());
        string.clear();
    }

    void show(orvellogin_result result, int code, HRESULT hresult, const char* what) noexcept {
        try {
            text = what;
        } catch (const std::bad_alloc&) {}
        shown = {sizeof shown, result, code, hresult, view(typeName), view(message), text.c_str()};
    }

    std::wstring typeName;
    std::wstring message;
    std::string text;
    orvellogin_failure shown = noFailure;
};

}  // namespace

struct orvellogin_client {
    explicit orvellogin_client(const orvellogin_options& options)
        : callbacks{{options.onLogin, options.loginContext}, {options.onLogout, options.logoutContext}, nextOwner()},
          language(static_cast<uiLang>(options.language)) {}

    // Registers the handler that finds the manager's assemblies. If it fails, the client can only report that failure.
    orvellogin_result start() noexcept {
        try {
            registerResolveHandler();
            return ORVELLOGIN_OK;
        } catch (...) {
            const orvellogin_result result = caught();
            started = false;
            return result;
        }
    }

    // Calls a member of the manager, which is created if necessary, and keeps what it returns.
    //
    // That is received into a variable of this function and kept at the end, because until then the arguments may be
    // results of the call before, and a callback may call this client.
    template <class Managed, class Result>
    orvellogin_result call(Member member, std::initializer_list<Input> inputs, Result* result) noexcept {
        if (!started) {
            return static_cast<orvellogin_result>(failure.get().result);
        }
        try {
            require(result, "the pointer for the result is null");
            StringArgument arguments[2] = {};
            std::transform(inputs.begin(), inputs.end(), arguments, checked);
            Managed received;
            const ManagedMember& row = unboundMembers.*member;
            if (row.offlineRule == calledOffline || !offline) {
                const ManagerHandle handle = managerHandle();
                ManagedFailure exception;
                if (!callManaged((managerMembers().*member).call, handle, inputs.size() > 0 ? &arguments[0] : nullptr,
                                 inputs.size() > 1 ? &arguments[1] : nullptr, &received, exception)) {
                    return failed(exception, row.exceptionRule);
                }
                refuseNull(received, row.nullRule);
            }
            forget();
            keep(received, *result);
            return ORVELLOGIN_OK;
        } catch (...) {
            return caught();
        }
    }

    // Wipes the results of the last call.
    void forget() noexcept {
        string.clear();
        if (record.present) {
            for (const auto& field : recordFields<orvellogin_response>) {
                (record.*field.source).clear();
            }
            record.present = 0;
        }
        if (started) {
            failure.clear();
        }
    }

    const orvellogin_failure& lastFailure() const { return failure.get(); }

    void withdraw() {
        withdrawCallbacks(callbacks.owner);
        callbacks.login = callbacks.logout = Callback();
    }

    bool offline = false;

private:
    static std::uint64_t nextOwner() {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    ManagerHandle managerHandle() {
        if (!manager.valid()) {
            const ManagerHandle created = createManager(callbacks, language);
            // A callback may have called this client meanwhile, and so created another manager. This one is leaked
            // then: managers may share a sign-in, so disposing one could affect the one in use.
            if (!manager.valid()) {
                manager.adopt(created);
            }
        }
        return manager.get();
    }

    void keep(ManagedString& received, orvellogin_string& result) {
        string.take(received);
        result = view(string);
    }

    void keep(ManagedRecord& received, const orvellogin_response*& result) {
        record.present = 1;
        response.size = sizeof response;
        for (const auto& field : recordFields<orvellogin_response>) {
            (record.*field.source).take(received.*field.source);
            response.*field.target = view(record.*field.source);
        }
        result = &response;
    }

    void keep(const ManagedNumber& received, int& result) { result = received.value; }

    // The failures of a member are data and are not thrown, because throwing costs as much as a call.
    orvellogin_result failed(const ManagedFailure& exception, ExceptionRule rule) {
        if (exception.isManagerException && rule == translated) {
            return failed(getStatusCode(exception.status));
        }
        loginRuntimeException cause = managedFailure(exception.typeName.toNativeOrEmpty(),
                                                     exception.message.toNativeOrEmpty(), exception.hresult);
        forget();
        failure.set(ORVELLOGIN_FAILED, cause);
        return ORVELLOGIN_FAILED;
    }

    orvellogin_result failed(statusCode code) noexcept {
        char message[64];
        std::snprintf(message, sizeof message, "the login manager reported error %d", code);
        return failed(ORVELLOGIN_MANAGER_ERROR, code, S_OK, message);
    }

    orvellogin_result failed(orvellogin_result result, int code, HRESULT hresult, const char* message) noexcept {
        forget();
        failure.set(result, code, hresult, message);
        return result;
    }

    // Describes the exception that is being handled.
    orvellogin_result caught() noexcept {
        try {
            throw;
        } catch (const ManagerError& error) {
            return failed(error.code);
        } catch (loginRuntimeException& cause) {
            forget();
            failure.set(ORVELLOGIN_FAILED, cause);
            return ORVELLOGIN_FAILED;
        } catch (const BadCall& bad) {
            return failed(ORVELLOGIN_BAD_CALL, -1, E_INVALIDARG, bad.what);
        } catch (const std::bad_alloc&) {
            return failed(ORVELLOGIN_NO_MEMORY, -1, E_OUTOFMEMORY, "memory is exhausted");
        } catch (const std::exception& other) {
            return failed(ORVELLOGIN_FAILED, -1, E_FAIL, other.what());
        }
    }

    Callbacks callbacks;
    const uiLang language;
    bool started = true;
    ManagedClient manager;

    // The results of the last call.
    ManagedString string;
    ManagedRecord record;
    orvellogin_response response = {};  // shows the record
    Failure failure;
};

namespace {

template <class Managed, class Result>
orvellogin_result call(orvellogin_client* client, Member member, std::initializer_list<Input> inputs, Result* result) {
    if (result) {
        reset(*result);
    }
    return client ? client->call<Managed>(member, inputs, result) : ORVELLOGIN_BAD_CALL;
}

orvellogin_result getString(orvellogin_client* client, Member member, orvellogin_string* result,
                            std::initializer_list<Input> inputs = {}) {
    return call<ManagedString>(client, member, inputs, result);
}

orvellogin_result getRecord(orvellogin_client* client, Member member, const orvellogin_response** result,
                            std::initializer_list<Input> inputs = {}) {
    return call<ManagedRecord>(client, member, inputs, result);
}

orvellogin_result getNumber(orvellogin_client* client, Member member, int* result,
                            std::initializer_list<Input> inputs = {}) {
    return call<ManagedNumber>(client, member, inputs, result);
}

orvellogin_result command(orvellogin_client* client, Member member, std::initializer_list<Input> inputs = {}) {
    int none;
    return getNumber(client, member, &none, inputs);
}

// Reads the fields that the caller's structure has. Returns false if `size` cannot be right or unknown fields are set.
bool read(const orvellogin_options& given, orvellogin_options& known) {
    constexpr int largest = 4096;  // a larger size was never set, and reading so far could be a page fault
    if (given.size < static_cast<int>(sizeof given.size) || given.size > largest) {
        return false;
    }
    const auto size = static_cast<std::size_t>(given.size);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&given);
    if (size > sizeof known &&
        std::any_of(bytes + sizeof known, bytes + size, [](unsigned char byte) { return byte; })) {
        return false;
    }
    // Without a field that is cut off. Every field ends at a multiple of a pointer's size, or only the next one does.
    std::memcpy(&known, bytes, std::min(size - size % sizeof(void*), sizeof known));
    return true;
}

}  // namespace

int ORVELLOGIN_CALL orvellogin_version() {
    return ORVELLOGIN_VERSION;
}

orvellogin_result ORVELLOGIN_CALL orvellogin_create(const orvellogin_options* options, orvellogin_client** client) {
    if (!client) {
        return ORVELLOGIN_BAD_CALL;
    }
    *client = nullptr;
    orvellogin_options known = {};
    if (options && !read(*options, known)) {
        return ORVELLOGIN_BAD_CALL;
    }
    std::unique_ptr<orvellogin_client> created(new (std::nothrow) orvellogin_client(known));
    const orvellogin_result result = created ? created->start() : ORVELLOGIN_NO_MEMORY;
    if (result != ORVELLOGIN_NO_MEMORY) {
        *client = created.release();
    }
    return result;
}

void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client) {
    delete client;
}

const orvellogin_failure* ORVELLOGIN_CALL orvellogin_lastFailure(const orvellogin_client* client) {
    return client ? &client->lastFailure() : &noClient;
}

void ORVELLOGIN_CALL orvellogin_forget(orvellogin_client* client) {
    if (client) {
        client->forget();
    }
}

void ORVELLOGIN_CALL orvellogin_withdrawCallbacks(orvellogin_client* client) {
    if (client) {
        client->withdraw();
    }
}

orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client, const orvellogin_response** response) {
    return getRecord(client, &ManagerMembers::login, response);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_loginWithPassword(orvellogin_client* client, const wchar_t* userName,
                                                               int userNameLength, const wchar_t* password,
                                                               int passwordLength,
                                                               const orvellogin_response** response) {
    return getRecord(client, &ManagerMembers::loginWithPassword, response,
                     {{userName, userNameLength}, {password, passwordLength}});
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client, int lastLoginFlag,
                                                             const orvellogin_response** response) {
    return getRecord(client, lastLoginFlag ? &ManagerMembers::login : &ManagerMembers::getLoggedInUser, response);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client) {
    return command(client, &ManagerMembers::Logout);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client, const wchar_t* targetUrl,
                                                             int targetUrlLength, orvellogin_string* url) {
    return getString(client, &ManagerMembers::formatAccessURL, url, {{targetUrl, targetUrlLength}});
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client, orvellogin_string* token) {
    return getString(client, &ManagerMembers::getAccessToken, token);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPlatFormURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getPlatformURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getRegistryURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getRegistryURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getKelpaURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getKelpaURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantName(orvellogin_client* client, orvellogin_string* name) {
    return getString(client, &ManagerMembers::getTenantName, name);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getPassportURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getPassportURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getCASCookie(orvellogin_client* client, orvellogin_string* cookie) {
    return getString(client, &ManagerMembers::getCASCookie, cookie);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getmyAppsURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getmyAppsURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantId(orvellogin_client* client, orvellogin_string* id) {
    return getString(client, &ManagerMembers::getTenantId, id);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client, orvellogin_string* ids) {
    return getString(client, &ManagerMembers::getTenantIds, ids);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client, orvellogin_string* url) {
    return getString(client, &ManagerMembers::getSpaceURL, url);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client, const wchar_t* spaceUrl,
                                                            int spaceUrlLength, orvellogin_string* ticket) {
    return getString(client, &ManagerMembers::getLoginTicket, ticket, {{spaceUrl, spaceUrlLength}});
}

orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client) {
    return command(client, &ManagerMembers::stopDNMListener);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_DunmoreLoginBrowser(orvellogin_client* client, const wchar_t* server,
                                                                 int serverLength, const wchar_t* clientId,
                                                                 int clientIdLength) {
    return command(client, &ManagerMembers::DunmoreLoginBrowser, {{server, serverLength}, {clientId, clientIdLength}});
}

orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client, orvellogin_string* token) {
    return getString(client, &ManagerMembers::getDNMAccessToken, token);
}

orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(orvellogin_client* client,
                                                                           const wchar_t* token, int tokenLength,
                                                                           int* expired) {
    return getNumber(client, &ManagerMembers::isDunmorePlatformTokenExpired, expired, {{token, tokenLength}});
}

void ORVELLOGIN_CALL orvellogin_setOrvelOfflineMode(orvellogin_client* client, int offline) {
    if (client) {
        client->offline = offline != 0;
    }
}

int ORVELLOGIN_CALL orvellogin_isOrvelOfflineMode(const orvellogin_client* client) {
    return client && client->offline ? 1 : 0;
}
