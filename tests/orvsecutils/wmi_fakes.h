#pragma once

#include <windows.h>

#include <objidl.h>
#include <wbemcli.h>

#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

#include "orvsecutils/platform/windows/com.h"

/// A WMI of the test's making, told by a script what to answer.
namespace fakes {

/// A property; its value a text, a number, an object or null, as `type` says.
struct property {
    std::wstring name;
    VARTYPE type;
    std::wstring text;
};

struct script {
    HRESULT locator = S_OK;
    HRESULT connect = S_OK;
    HRESULT blanket = S_OK;
    HRESULT query = S_OK;
    std::vector<std::vector<property>> objects;
    HRESULT afterobjects = WBEM_S_FALSE;
    HRESULT afterproperties = WBEM_S_NO_MORE_DATA;
    std::vector<std::wstring> seen;  ///< what was asked, in order
};

/// An interface is a table of functions. This one has places for `Count` members that the library has no use for; what
/// a class of this base declares follows them, so that it has to do so in the interface's order.
template <int Count>
class unused : public unused<Count - 1> {
    virtual void member(std::integral_constant<int, Count>) { std::abort(); }
};
template <>
class unused<0> : public IUnknown {};

inline int alive = 0;  ///< fake objects that nobody has released yet

template <class Self, class... Interfaces>
class counted : public Interfaces... {
public:
    explicit counted(script& storyIn) : story(storyIn) { ++alive; }
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
    script& story;

private:
    ULONG references = 1;
};

/// An IWbemClassObject.
class object final : public counted<object, unused<5>> {
public:
    object(script& storyIn, const std::vector<property>& propertiesIn) : counted(storyIn), properties(propertiesIn) {}
    virtual HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE Next(LONG, BSTR* name, VARIANT* value, CIMTYPE*, LONG*) {
        if (index == properties.size()) {
            return story.afterproperties;
        }
        const property& next = properties[index++];
        *name = orvsecutils::makebstr(next.name).release();
        V_VT(value) = next.type;
        if (next.type == VT_BSTR) {
            V_BSTR(value) = orvsecutils::makebstr(next.text).release();
        } else if (next.type == VT_UNKNOWN) {
            V_UNKNOWN(value) = new object(story, properties);
        }
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE EndEnumeration() {
        story.seen.push_back(L"end");
        return S_OK;
    }

private:
    const std::vector<property>& properties;
    std::size_t index = 0;
};

/// An IEnumWbemClassObject.
class enumerator final : public counted<enumerator, unused<1>> {
public:
    using counted::counted;
    virtual HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IUnknown** objects, ULONG* returned) {
        if (timeout != -1 || count != 1) {
            return E_INVALIDARG;
        }
        if (index == story.objects.size()) {
            return story.afterobjects;
        }
        *objects = new object(story, story.objects[index++]);
        *returned = 1;
        return S_OK;
    }

private:
    std::size_t index = 0;
};

/// An IWbemServices, with the security side that the system's proxies have.
class services final : public counted<services, unused<17>, IClientSecurity> {
public:
    using counted::counted;
    ~services() { story.seen.push_back(L"services gone"); }
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
        story.seen.push_back(std::wstring(language) + L" " + std::to_wstring(flags) + L" " + text);
        *objects = SUCCEEDED(story.query) ? new enumerator(story) : nullptr;
        return story.query;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR* principal,
                                         DWORD level, DWORD impersonation, void* identity,
                                         DWORD capabilities) override {
        std::wstring seen = L"blanket";
        for (const DWORD number : {authentication, authorisation, level, impersonation, capabilities}) {
            seen += L" " + std::to_wstring(number);
        }
        story.seen.push_back(seen + (principal || identity ? L" somebody" : L""));
        return story.blanket;
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
    ~locator() { story.seen.push_back(L"locator gone"); }
    HRESULT STDMETHODCALLTYPE ConnectServer(BSTR space, BSTR user, BSTR password, BSTR locale, LONG flags,
                                            BSTR authority, IWbemContext*, IWbemServices** object) override {
        story.seen.push_back(std::wstring(space) + L" " + std::to_wstring(flags) +
                             (user || password || locale || authority ? L" somebody" : L""));
        *object = reinterpret_cast<IWbemServices*>(SUCCEEDED(story.connect) ? new services(story) : nullptr);
        return story.connect;
    }
};

}  // namespace fakes
