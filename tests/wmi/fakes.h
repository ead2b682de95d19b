#pragma once

#include <windows.h>

#include <objidl.h>

#include <string>
#include <utility>
#include <vector>

#include "orvsecutils/platform/com.h"
#include "tests/wmi/stubs.h"

/// A WMI of the test's making, told by a script what to answer.
namespace fakes {

inline int alive = 0;  ///< fake objects that nobody has released yet

template <class Interface>
class counted : public Interface {
public:
    counted() { ++alive; }
    virtual ~counted() { --alive; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }

private:
    ULONG references = 1;
};

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

/// The services' security side, which the system's proxies have.
class security : public counted<IClientSecurity> {
public:
    explicit security(script& storyIn) : story(storyIn) {}
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR* principal,
                                         DWORD level, DWORD impersonation, void* identity,
                                         DWORD capabilities) override {
        story.seen.push_back(L"blanket " + std::to_wstring(authentication) + L"," + std::to_wstring(authorisation) +
                             L"," + std::to_wstring(level) + L"," + std::to_wstring(impersonation) + L"," +
                             std::to_wstring(capabilities) + (principal || identity ? L", named" : L""));
        return story.blanket;
    }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }

private:
    script& story;
};

class object : public counted<stubs::object> {
public:
    object(script& storyIn, const std::vector<property>& propertiesIn) : story(storyIn), properties(propertiesIn) {}
    HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EndEnumeration() override {
        story.seen.push_back(L"end");
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Next(LONG, BSTR* name, VARIANT* value, CIMTYPE*, LONG*) override {
        if (index == properties.size()) {
            return story.afterproperties;
        }
        const property& next = properties[index++];
        *name = orvsecutils::makesystemstring(next.name).release();
        V_VT(value) = next.type;
        if (next.type == VT_BSTR) {
            V_BSTR(value) = orvsecutils::makesystemstring(next.text).release();
        } else if (next.type == VT_UNKNOWN) {
            V_UNKNOWN(value) = new security(story);
        }
        return S_OK;
    }

private:
    script& story;
    const std::vector<property>& properties;
    std::size_t index = 0;
};

class enumerator : public counted<stubs::enumerator> {
public:
    explicit enumerator(script& storyIn) : story(storyIn) {}
    HRESULT STDMETHODCALLTYPE Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override {
        *returned = 0;
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
    script& story;
    std::size_t index = 0;
};

class services : public counted<stubs::services> {
public:
    explicit services(script& storyIn) : story(storyIn) {}
    ~services() override { story.seen.push_back(L"services gone"); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualIID(iid, IID_IClientSecurity)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IClientSecurity*>(new security(story));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*,
                                        IEnumWbemClassObject** objects) override {
        story.seen.push_back(std::wstring(language) + L" " + std::to_wstring(flags) + L" " + text);
        if (SUCCEEDED(story.query)) {
            *objects = new enumerator(story);
        }
        return story.query;
    }

private:
    script& story;
};

class locator : public counted<IWbemLocator> {
public:
    explicit locator(script& storyIn) : story(storyIn) {}
    ~locator() override { story.seen.push_back(L"locator gone"); }
    HRESULT STDMETHODCALLTYPE ConnectServer(BSTR space, BSTR user, BSTR password, BSTR locale, LONG flags,
                                            BSTR authority, IWbemContext*, IWbemServices** object) override {
        story.seen.push_back(std::wstring(space) + L" " + std::to_wstring(flags) +
                             (user || password || locale || authority ? L" somebody" : L""));
        if (SUCCEEDED(story.connect)) {
            *object = new services(story);
        }
        return story.connect;
    }

private:
    script& story;
};

}  // namespace fakes
