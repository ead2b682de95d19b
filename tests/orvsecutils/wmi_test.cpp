#include <winsock2.h>

#include <iphlpapi.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <thread>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/windows/wmiconnection.h"
#include "tests/orvsecutils/wmi_fakes.h"

using namespace orvsecutils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {

class WmiOnFakes : public testing::Test {
protected:
    ~WmiOnFakes() override { EXPECT_EQ(fakes::alive, 0) << "not everything was released"; }

    std::shared_ptr<wmi> connect() {
        return wmiconnection::connect([this](IWbemLocator** object) {
            *object = SUCCEEDED(script.locator) ? new fakes::locator(script) : nullptr;
            return script.locator;
        });
    }

    fakes::script script;
};

TEST_F(WmiOnFakes, AsksAndReleasesInOrder) {
    std::vector<wmirow> rows = {{{"there", "before"}}};
    EXPECT_TRUE(connect()->query("SELECT Größe", rows));
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("there", "before")), ElementsAre(Pair("name", "x"))));
    EXPECT_THAT(script.seen, ElementsAre(L"ROOT\\CIMV2 128", L"blanket 10 0 3 3 0", L"WQL 48 SELECT Größe", L"end",
                                         L"locator gone", L"services gone"));
}

TEST_F(WmiOnFakes, NoConnectionWhenAnyStepFails) {
    for (HRESULT fakes::script::*step : {&fakes::script::locator, &fakes::script::connect, &fakes::script::blanket}) {
        script = {};
        script.*step = E_ACCESSDENIED;
        EXPECT_EQ(connect(), nullptr);
        EXPECT_EQ(fakes::alive, 0);
    }
}

TEST_F(WmiOnFakes, AFailureEndsTheRowsWithoutLosingThem) {
    const std::shared_ptr<wmi> connection = connect();
    script.afterobject = script.afterproperty = E_FAIL;
    std::vector<wmirow> rows;
    EXPECT_TRUE(connection->query("q", rows));
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("name", "x"))));
    script.enumeration = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows));
    EXPECT_THAT(rows[1], IsEmpty());
    script.query = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows)) << "rows that were there count";
    EXPECT_THAT(rows, SizeIs(2));
    rows.clear();
    EXPECT_FALSE(connection->query("q", rows));
    EXPECT_FALSE(wmiconnection().query("q", rows)) << "without a connection";
}

TEST_F(WmiOnFakes, ReleasesEverythingWhenAConversionThrows) {
    script.value = L"\xD800";
    std::vector<wmirow> rows;
    EXPECT_THROW(connect()->query("q", rows), std::range_error);
    EXPECT_THROW(connect()->query("\xFF", rows), std::range_error);
}

TEST(WmiRow, HoldsTextsOnlyAndTheFirstOfAName) {
    const struct {
        const wchar_t* name;
        VARTYPE type;
        const wchar_t* value;
    } properties[] = {{L"b", VT_BSTR, L"1"},   {L"null", VT_NULL, L""},  {L"b", VT_BSTR, L"2"},
                      {L"number", VT_I4, L""}, {L"empty", VT_BSTR, L""}, {L"Ä", VT_BSTR, L"日本 \U0001F600"}};
    wmirow row;
    for (const auto& property : properties) {
        const bstr text = makebstr(property.value);
        VARIANT value;
        V_VT(&value) = property.type;
        V_BSTR(&value) = text.get();
        addproperty(row, makebstr(property.name).get(), value);
    }
    EXPECT_THAT(row, ElementsAre(Pair("b", "1"), Pair("empty", ""), Pair("Ä", "日本 \U0001F600")));
}

// The addresses of the adapters that speak IP, by another interface of the system.
std::set<std::string> adapteraddresses() {
    std::set<std::string> addresses;
    std::vector<IP_ADAPTER_INFO> adapters(32);
    ULONG bytes = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
    const IP_ADAPTER_INFO* next = GetAdaptersInfo(adapters.data(), &bytes) == ERROR_SUCCESS ? adapters.data() : nullptr;
    for (; next; next = next->Next) {
        if (next->IpAddressList.IpAddress.String == std::string("0.0.0.0")) {
            continue;  // speaks no IP now
        }
        std::string text;
        for (UINT i = 0; i < next->AddressLength; ++i) {
            char part[4];
            std::snprintf(part, sizeof part, "%02X:", next->Address[i]);
            text += part;
        }
        addresses.insert(text.substr(0, text.size() - !text.empty()));
    }
    return addresses;
}

TEST(WmiOfTheMachine, AnswersOrNotByTheThreadsApartment) {
    std::string address = currentplatform().macaddress();
    std::transform(address.begin(), address.end(), address.begin(), ::toupper);
    const std::set<std::string> addresses = adapteraddresses();
    EXPECT_TRUE(addresses.empty() ? address.empty() : addresses.count(address) == 1) << address;
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
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_NE(rows[0]["Caption"], "");
    rows.clear();
    EXPECT_FALSE(connection->query("this is no query", rows));
}

}  // namespace
