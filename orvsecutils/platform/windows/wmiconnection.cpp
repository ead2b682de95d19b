#include "orvsecutils/platform/windows/wmiconnection.h"

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/com.h"

using Microsoft::WRL::ComPtr;

namespace orvsecutils {

namespace {

// The string of a BSTR, including embedded zero code units. Null counts as empty.
std::wstring_view view(BSTR text) {
    return {text, SysStringLen(text)};
}

// An enumeration of an object's properties; the destructor ends it.
class propertyenumeration {
public:
    explicit propertyenumeration(IWbemClassObject& objectIn)
        : object(objectIn), begun(SUCCEEDED(object.BeginEnumeration(0))) {}
    ~propertyenumeration() {
        if (begun) {
            object.EndEnumeration();
        }
    }
    propertyenumeration(const propertyenumeration&) = delete;
    propertyenumeration& operator=(const propertyenumeration&) = delete;

    // False at the end and after an error, because the enumeration might never reach its end after an error.
    bool next(bstr& name, variant& value) {
        BSTR text = nullptr;
        const HRESULT result =
            begun ? object.Next(0, &text, &value.value, nullptr, nullptr) : HRESULT{WBEM_S_NO_MORE_DATA};
        name.reset(text);
        return result == WBEM_S_NO_ERROR;
    }

private:
    IWbemClassObject& object;
    const bool begun;
};

wmirow textproperties(IWbemClassObject& object) {
    wmirow row;
    propertyenumeration properties(object);
    for (;;) {
        bstr name;
        variant property;
        if (!properties.next(name, property)) {
            return row;
        }
        addproperty(row, name.get(), property.value);
    }
}

// Null at the end, for which WMI returns a different success code, and after an error.
ComPtr<IWbemClassObject> nextobject(IEnumWbemClassObject& objects) {
    ComPtr<IWbemClassObject> object;
    ULONG count = 0;
    const HRESULT result = objects.Next(static_cast<LONG>(WBEM_INFINITE), 1, &object, &count);
    return result == WBEM_S_NO_ERROR ? object : nullptr;
}

}  // namespace

void addproperty(wmirow& row, BSTR name, const VARIANT& value) {
    if (V_VT(&value) == VT_BSTR) {
        row.emplace(toutf8(view(name)), toutf8(view(V_BSTR(&value))));
    }
}

std::shared_ptr<wmi> wmi::connect() {
    return wmiconnection::connect([](IWbemLocator** locator) {
        return CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                reinterpret_cast<void**>(locator));
    });
}

std::shared_ptr<wmi> wmiconnection::connect(const locatorsource& source) {
    const auto connection = std::make_shared<wmiconnection>();
    return connection->open(source) ? connection : nullptr;
}

bool wmiconnection::open(const locatorsource& source) {
    // Never uninitialised, because other code on this thread may rely on COM by the time the connection ends.
    if (FAILED(CoInitialize(nullptr))) {
        return false;
    }
    // Fails if the host has set security before; then the host's settings apply, and the proxy blanket below sets what
    // this connection needs.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr,
                         EOAC_NONE, nullptr);
    if (FAILED(source(&locator))) {
        return false;
    }
    const bstr namespacepath = makebstr(L"ROOT\\CIMV2");
    return SUCCEEDED(locator->ConnectServer(namespacepath.get(), nullptr, nullptr, nullptr,
                                            WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, &services)) &&
           SUCCEEDED(CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                       RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE));
}

bool wmiconnection::query(const std::string& text, std::vector<wmirow>& rows) const {
    if (!services) {
        return !rows.empty();
    }
    const bstr language = makebstr(L"WQL");
    const bstr wql = makebstr(toutf16(text));
    ComPtr<IEnumWbemClassObject> objects;
    if (SUCCEEDED(services->ExecQuery(language.get(), wql.get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                      nullptr, &objects))) {
        while (const ComPtr<IWbemClassObject> object = nextobject(*objects.Get())) {
            rows.push_back(textproperties(*object.Get()));
        }
    }
    return !rows.empty();
}

}  // namespace orvsecutils
