#include <windows.h>

#include <objidl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/rules.h"
#include "orvsecutils/platform/windows/com.h"
#include "orvsecutils/platform/windows/wmiconnection.h"

using namespace orvsecutils;
using namespace testing;

namespace {

// An interface is a table of functions. This skips `Count` of them, which the library does not call.
template <int Count, class Base>
class skipping : public skipping<Count - 1, Base> {
    virtual void member(std::integral_constant<int, Count>, Base*) { std::abort(); }
};
template <class Base>
class skipping<0, Base> : public Base {};

// One object in all the roles of a WMI whose answer is one object with one property: the members that the library calls
// are in different places of the interfaces' tables.
struct locatorandenumerator : IUnknown {
    HRESULT locator = S_OK, connection = S_OK, blanket = S_OK, result = S_OK;
    HRESULT afterobject = WBEM_S_FALSE, afterproperty = WBEM_S_NO_MORE_DATA;
    std::wstring value = L"x";
    int objects = 1, properties = 1;
    ULONG references = 0;
    std::vector<std::wstring> seen;  // what was asked, in order

    template <class... Parts>
    void note(const Parts&... parts) {
        std::wostringstream line;
        ((line << parts << L'|'), ...);
        seen.push_back(line.str());
    }
    template <class Interface>
    HRESULT give(Interface** place, HRESULT status) {
        references += SUCCEEDED(status);
        *place = SUCCEEDED(status) ? reinterpret_cast<Interface*>(this) : nullptr;
        return status;
    }
    virtual HRESULT STDMETHODCALLTYPE ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags,
                                                    BSTR authority, IWbemContext*, IUnknown** services) {
        note(path, flags, user || password || locale || authority);
        return give(services, connection);
    }
    virtual HRESULT STDMETHODCALLTYPE NextObject(LONG timeout, ULONG count, IUnknown** object, ULONG*) {
        return timeout != -1 || count != 1 ? E_INVALIDARG : objects-- > 0 ? give(object, S_OK) : afterobject;
    }
};
struct classobject : skipping<3, locatorandenumerator> {
    virtual HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) { return S_OK; }
    virtual HRESULT STDMETHODCALLTYPE NextProperty(LONG, BSTR* name, VARIANT* place, CIMTYPE*, LONG*) {
        if (properties-- <= 0) {
            return afterproperty;
        }
        *name = makebstr(L"name").release();
        V_VT(place) = VT_BSTR;
        V_BSTR(place) = makebstr(value).release();
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE EndEnumeration() {
        note(L"end");
        return S_OK;
    }
};
struct fakewmi final : skipping<9, classobject>, IClientSecurity {
    virtual HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*, IUnknown** found) {
        note(language, flags, text);
        objects = properties = 1;
        return give(found, result);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = static_cast<IClientSecurity*>(this);
        return IsEqualIID(iid, IID_IClientSecurity) ? ++references, S_OK : E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR*, DWORD level,
                                         DWORD impersonation, void*, DWORD capabilities) override {
        note(authentication, authorisation, level, impersonation, capabilities);
        return blanket;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};

class WmiOnFakes : public Test {
protected:
    ~WmiOnFakes() override { EXPECT_EQ(fake.references, 0u); }
    std::shared_ptr<wmi> connect() {
        return wmiconnection::connect([this](IWbemLocator** object) { return fake.give(object, fake.locator); });
    }
    fakewmi fake;
    std::vector<wmirow> rows;
};

TEST_F(WmiOnFakes, AsksForTheSecurityThatIsNeeded) {
    EXPECT_TRUE(connect()->query("SELECT *", rows));
    EXPECT_THAT(fake.seen, ElementsAre(L"ROOT\\CIMV2|128|0|", L"10|0|3|3|0|", L"WQL|48|SELECT *|", L"end|"));
    for (HRESULT fakewmi::*step : {&fakewmi::locator, &fakewmi::connection, &fakewmi::blanket}) {
        fake.*step = E_ACCESSDENIED;
        EXPECT_EQ(connect(), nullptr);
        fake.*step = S_OK;
    }
}

TEST_F(WmiOnFakes, AFailureEndsTheRowsWithoutLosingThem) {
    const std::shared_ptr<wmi> connection = connect();
    fake.afterobject = fake.afterproperty = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows));
    fake.result = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows)) << "rows that were there count";
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("name", "x"))));
    rows.clear();
    EXPECT_FALSE(connection->query("q", rows));
    EXPECT_FALSE(wmiconnection().query("q", rows)) << "without a connection";
    fake.result = S_OK;
    fake.value = L"\xD800";
    EXPECT_THROW(connection->query("q", rows), std::range_error);
}

TEST_F(WmiOnFakes, RowsHoldTextsOnlyAndTheFirstOfAName) {
    const std::tuple<const wchar_t*, VARTYPE, const wchar_t*> properties[] = {
        {L"b", VT_BSTR, L"1"}, {L"b", VT_BSTR, L"2"}, {L"n", VT_I4, L""}, {L"e", VT_BSTR, L""}, {L"Ä", VT_BSTR, L"日"}};
    wmirow row;
    for (const auto& [name, type, content] : properties) {
        variant property;
        V_BSTR(&property.value) = makebstr(content).release();
        V_VT(&property.value) = type;
        addproperty(row, makebstr(name).get(), property.value);
    }
    EXPECT_THAT(row, ElementsAre(Pair("b", "1"), Pair("e", ""), Pair("Ä", "日")));
    variant cleared;  // what it refers to is counted at the end
    V_VT(&cleared.value) = VT_UNKNOWN;
    fake.give(&V_UNKNOWN(&cleared.value), S_OK);
}

TEST(WmiOfTheMachine, AnswersUnlessTheThreadIsInTheMultithreadedApartment) {
    std::vector<wmirow> rows;
    wmi::connect();
    const std::shared_ptr<wmi> connection = wmi::connect();
    ASSERT_NE(connection, nullptr) << "when the thread has COM in the same model already";
    EXPECT_TRUE(connection->query("SELECT Caption, BuildNumber FROM Win32_OperatingSystem", rows));
    EXPECT_THAT(rows, ElementsAre(Contains(Pair("Caption", Not("")))));
    EXPECT_EQ(currentplatform().macaddress(), adapteraddress(connection.get()));
    std::thread([] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(wmi::connect(), nullptr);
        EXPECT_EQ(currentplatform().macaddress(), "");
    }).join();
}

}  // namespace
