#pragma once

#include <windows.h>

#include <objidl.h>
#include <wbemcli.h>

#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

#include "orvsecutils/platform/windows/com.h"

/// A WMI with one object of one property, for what the real one does not show: what it was asked, and failures midway.
namespace fakes {

struct script {
    HRESULT locator = S_OK;
    HRESULT connect = S_OK;
    HRESULT blanket = S_OK;
    HRESULT query = S_OK;
    HRESULT enumeration = S_OK;  ///< of the properties
    HRESULT afterobject = WBEM_S_FALSE;
    HRESULT afterproperty = WBEM_S_NO_MORE_DATA;
    std::wstring value = L"x";       ///< of the property "name"
    std::vector<std::wstring> seen;  ///< what was asked, in order
};

/// An interface is a table of functions. This class has places for `Count` members that the library does not call; what
/// a derived class declares follows them.
template <int Count>
class unused : public unused<Count - 1> {
    virtual void member(std::integral_constant<int, Count>) { std::abort(); }
};
template <>
class unused<0> : public IUnknown {};

inline int alive = 0;  ///< fake objects that are not released yet

template <class Self, class... Interfaces>
class counted : public Interfaces... {
public:
    explicit counted(script& scriptIn) : asked(scriptIn) { ++alive; }
    ~counted() { --alive; }  // not virtual: that would take places in the table
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) {
            delete static_cast<Self*>(this);
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }

protected:
    script& asked;
    bool given = false;  // the one object or property

private:
    ULONG references = 1;
};

/// An IWbemClassObject.
class object final : public counted<object, unused<5>> {
public:
    using counted::counted;
    virtual HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) { return asked.enumeration; }
    virtual HRESULT STDMETHODCALLTYPE Next(LONG, BSTR* name, VARIANT* value, CIMTYPE*, LONG*) {
        if (given) {
            return asked.afterproperty;
        }
        given = true;
        *name = orvsecutils::makebstr(L"name").release();
        V_VT(value) = VT_BSTR;
        V_BSTR(value) = orvsecutils::makebstr(asked.value).release();
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE EndEnumeration() {
        asked.seen.push_back(L"end");
        return S_OK;
    }
};

/// An IEnumWbemClassObject.
class enumerator final : public counted<enumerator, unused<1>> {
public:
    using counted::counted;
    virtual HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IUnknown** objects, ULONG* returned) {
        if (timeout != -1 || count != 1) {
            return E_INVALIDARG;
        }
        if (given) {
            return asked.afterobject;
        }
        given = true;
        *objects = new object(asked);
        *returned = 1;
        return S_OK;
    }
};

/// An IWbemServices, with the security interface that the system's proxies have.
class services final : public counted<services, unused<17>, IClientSecurity> {
public:
    using counted::counted;
    ~services() { asked.seen.push_back(L"services gone"); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualIID(iid, IID_IClientSecurity)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = static_cast<IClientSecurity*>(this);
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*,
                                                IUnknown** objects) {
        asked.seen.push_back(std::wstring(language) + L" " + std::to_wstring(flags) + L" " + text);
        *objects = SUCCEEDED(asked.query) ? new enumerator(asked) : nullptr;
        return asked.query;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR*, DWORD level,
                                         DWORD impersonation, void*, DWORD capabilities) override {
        std::wstring seen = L"blanket";
        for (const DWORD number : {authentication, authorisation, level, impersonation, capabilities}) {
            seen += L" " + std::to_wstring(number);
        }
        asked.seen.push_back(seen);
        return asked.blanket;
    }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};

class locator final : public counted<locator, IWbemLocator> {
public:
    using counted::counted;
    ~locator() { asked.seen.push_back(L"locator gone"); }
    HRESULT STDMETHODCALLTYPE ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags,
                                            BSTR authority, IWbemContext*, IWbemServices** object) override {
        asked.seen.push_back(std::wstring(path) + L" " + std::to_wstring(flags) +
                             (user || password || locale || authority ? L" somebody" : L""));
        *object = reinterpret_cast<IWbemServices*>(SUCCEEDED(asked.connect) ? new services(asked) : nullptr);
        return asked.connect;
    }
};

}  // namespace fakes
