#include <windows.h>

#include <objidl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <thread>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/windows/com.h"
#include "orvsecutils/platform/windows/wmiconnection.h"

using namespace orvsecutils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

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
    virtual HRESULT STDMETHODCALLTYPE ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags,
                                                    BSTR authority, IWbemContext*, IUnknown** services) = 0;
    virtual HRESULT STDMETHODCALLTYPE NextObject(LONG timeout, ULONG count, IUnknown** object, ULONG* returned) = 0;
};
struct classobject : skipping<3, locatorandenumerator> {
    virtual HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) = 0;
    virtual HRESULT STDMETHODCALLTYPE NextProperty(LONG, BSTR* name, VARIANT* value, CIMTYPE*, LONG*) = 0;
    virtual HRESULT STDMETHODCALLTYPE EndEnumeration() = 0;
};
struct services : skipping<9, classobject> {
    virtual HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*,
                                                IUnknown** objects) = 0;
};
class fakewmi final : public services, public IClientSecurity {
public:
    HRESULT locator = S_OK, connection = S_OK, blanket = S_OK, result = S_OK, enumeration = S_OK;
    HRESULT afterobject = WBEM_S_FALSE, afterproperty = WBEM_S_NO_MORE_DATA;
    std::wstring value = L"x";
    int objects = 1, properties = 1;
    ULONG references = 0;
    std::vector<std::wstring> seen;  // what was asked, in order

    template <class Interface>
    HRESULT give(Interface** place, HRESULT status) {
        references += SUCCEEDED(status);
        *place = SUCCEEDED(status) ? reinterpret_cast<Interface*>(static_cast<services*>(this)) : nullptr;
        return status;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualIID(iid, IID_IClientSecurity)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = static_cast<IClientSecurity*>(this);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ConnectServer(BSTR path, BSTR user, BSTR password, BSTR locale, LONG flags,
                                            BSTR authority, IWbemContext*, IUnknown** object) override {
        const bool asuser = user || password || locale || authority;
        seen.push_back(path + (L" " + std::to_wstring(flags)) + (asuser ? L" as somebody" : L""));
        return give(object, connection);
    }
    HRESULT STDMETHODCALLTYPE SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR*, DWORD level,
                                         DWORD impersonation, void*, DWORD capabilities) override {
        seen.push_back(L"blanket");
        for (const DWORD number : {authentication, authorisation, level, impersonation, capabilities}) {
            seen.back() += L" " + std::to_wstring(number);
        }
        return blanket;
    }
    HRESULT STDMETHODCALLTYPE QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**,
                                           DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ExecQuery(BSTR language, BSTR text, LONG flags, IWbemContext*,
                                        IUnknown** found) override {
        seen.push_back(language + (L" " + std::to_wstring(flags)) + L" " + text);
        objects = properties = 1;
        return give(found, result);
    }
    HRESULT STDMETHODCALLTYPE NextObject(LONG timeout, ULONG count, IUnknown** object, ULONG*) override {
        return timeout != -1 || count != 1 ? E_INVALIDARG : objects-- > 0 ? give(object, S_OK) : afterobject;
    }
    HRESULT STDMETHODCALLTYPE BeginEnumeration(LONG) override { return enumeration; }
    HRESULT STDMETHODCALLTYPE NextProperty(LONG, BSTR* name, VARIANT* place, CIMTYPE*, LONG*) override {
        if (properties-- <= 0) {
            return afterproperty;
        }
        *name = makebstr(L"name").release();
        V_VT(place) = VT_BSTR;
        V_BSTR(place) = makebstr(value).release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EndEnumeration() override {
        seen.push_back(L"end");
        return S_OK;
    }
};

class WmiOnFakes : public testing::Test {
protected:
    ~WmiOnFakes() override { EXPECT_EQ(fake.references, 0u); }
    std::shared_ptr<wmi> connect() {
        return wmiconnection::connect([this](IWbemLocator** object) { return fake.give(object, fake.locator); });
    }
    fakewmi fake;
    std::vector<wmirow> rows;
};

TEST_F(WmiOnFakes, AsksForTheSecurityThatIsNeeded) {
    EXPECT_TRUE(connect()->query("SELECT Größe", rows));
    EXPECT_THAT(fake.seen, ElementsAre(L"ROOT\\CIMV2 128", L"blanket 10 0 3 3 0", L"WQL 48 SELECT Größe", L"end"));
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
    fake.enumeration = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows));
    fake.result = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows)) << "rows that were there count";
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("name", "x")), IsEmpty()));
    rows.clear();
    EXPECT_FALSE(connection->query("q", rows));
    EXPECT_FALSE(wmiconnection().query("q", rows)) << "without a connection";
    fake.result = fake.enumeration = S_OK;
    fake.value = L"\xD800";
    EXPECT_THROW(connection->query("q", rows), std::range_error);
}

TEST(WmiRow, HoldsTextsOnlyAndTheFirstOfAName) {
    const std::tuple<const wchar_t*, VARTYPE, const wchar_t*> properties[] = {
        {L"b", VT_BSTR, L"1"},   {L"null", VT_NULL, L""},  {L"b", VT_BSTR, L"2"},
        {L"number", VT_I4, L""}, {L"empty", VT_BSTR, L""}, {L"Ä", VT_BSTR, L"日本 \U0001F600"}};
    wmirow row;
    for (const auto& [name, type, content] : properties) {
        const bstr text = makebstr(content);
        VARIANT value;
        V_VT(&value) = type;
        V_BSTR(&value) = text.get();
        addproperty(row, makebstr(name).get(), value);
    }
    EXPECT_THAT(row, ElementsAre(Pair("b", "1"), Pair("empty", ""), Pair("Ä", "日本 \U0001F600")));
}

TEST(WmiOfTheMachine, AnswersOrNotByTheThreadsApartment) {
    const std::string address = currentplatform().macaddress();
    EXPECT_TRUE(std::regex_match(address, std::regex("(([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2})?"))) << address;
    std::thread([] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(wmi::connect(), nullptr);
        EXPECT_EQ(currentplatform().macaddress(), "");
    }).join();
}

TEST(WmiOfTheMachine, DeliversRows) {
    std::vector<wmirow> rows;
    wmi::connect();
    const std::shared_ptr<wmi> connection = wmi::connect();
    ASSERT_NE(connection, nullptr) << "when the thread has COM in the same model already";
    EXPECT_TRUE(connection->query("SELECT Caption, BuildNumber FROM Win32_OperatingSystem", rows));
    EXPECT_THAT(rows, ElementsAre(testing::Contains(Pair("Caption", testing::Not("")))));
}

}  // namespace
