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
#include "orvsecutils/platform/rules.h"
#include "orvsecutils/platform/windows/wmiconnection.h"
#include "tests/orvsecutils/wmi_fakes.h"

using namespace orvsecutils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class WmiOnFakes : public testing::Test {
protected:
    ~WmiOnFakes() override { EXPECT_EQ(fakes::alive, 0) << "not everything was released"; }

    std::shared_ptr<wmi> connect() {
        return wmiconnection::connect([this](IWbemLocator** object) {
            *object = SUCCEEDED(story.locator) ? new fakes::locator(story) : nullptr;
            return story.locator;
        });
    }

    static fakes::property text(const wchar_t* name, const wchar_t* value) { return {name, VT_BSTR, value}; }
    static fakes::property null(const wchar_t* name) { return {name, VT_NULL, L""}; }

    fakes::script story;
};

TEST_F(WmiOnFakes, AsksAndReleasesInOrder) {
    story.objects = {{text(L"Name", L"x")}};
    std::vector<wmirow> rows;
    EXPECT_TRUE(connect()->query("SELECT Größe", rows));
    EXPECT_THAT(story.seen, ElementsAre(L"ROOT\\CIMV2 128", L"blanket 10 0 3 3 0", L"WQL 48 SELECT Größe", L"end",
                                        L"locator gone", L"services gone"));
}

TEST_F(WmiOnFakes, NoConnectionWhenAnyStepFails) {
    for (HRESULT fakes::script::*step : {&fakes::script::locator, &fakes::script::connect, &fakes::script::blanket}) {
        story = {};
        story.*step = E_ACCESSDENIED;
        EXPECT_EQ(connect(), nullptr);
        EXPECT_EQ(fakes::alive, 0);
    }
}

TEST_F(WmiOnFakes, RowsHoldTextsOnlyAndTheFirstOfAName) {
    story.objects = {
        {text(L"b", L"1"), null(L"a"), text(L"b", L"2"), {L"c", VT_I4, L""}, text(L"Ä", L"日本 \U0001F600")},
        {},
        {{L"object", VT_UNKNOWN, L""}, text(L"empty", L"")}};
    std::vector<wmirow> rows = {{{"there", "before"}}};
    EXPECT_TRUE(connect()->query("q", rows));
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("there", "before")),
                                  ElementsAre(Pair("b", "1"), Pair("Ä", "日本 \U0001F600")), IsEmpty(),
                                  ElementsAre(Pair("empty", ""))));
}

TEST_F(WmiOnFakes, AnErrorEndsTheRowsWithoutLosingThem) {
    story.objects = {{text(L"a", L"1")}};
    story.afterobjects = story.afterproperties = E_FAIL;
    std::vector<wmirow> rows;
    const std::shared_ptr<wmi> connection = connect();
    EXPECT_TRUE(connection->query("q", rows));
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("a", "1"))));

    story.query = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows)) << "rows that were there count";
    rows.clear();
    EXPECT_FALSE(connection->query("q", rows));
    EXPECT_FALSE(wmiconnection().query("q", rows)) << "without a connection";
}

TEST_F(WmiOnFakes, ReleasesEverythingWhenAConversionThrows) {
    story.objects = {{{L"object", VT_UNKNOWN, L""}, text(L"b", L"\xD800")}};
    std::vector<wmirow> rows;
    EXPECT_THROW(connect()->query("q", rows), std::range_error);
    EXPECT_THROW(connect()->query("\xFF", rows), std::range_error);
}

TEST_F(WmiOnFakes, TheLastAddressWins) {
    const fakes::property first = text(L"MACAddress", L"01");
    const fakes::property second = text(L"MACAddress", L"02");
    const std::pair<std::vector<std::vector<fakes::property>>, const char*> cases[] = {
        {{}, ""},
        {{{null(L"MACAddress")}}, ""},
        {{{first}, {second}}, "02"},
        {{{first}, {null(L"MACAddress")}, {}}, "01"},
        {{{second}, {first}, {text(L"Caption", L"03")}}, "01"},
    };
    for (const auto& [objects, address] : cases) {
        story.objects = objects;
        EXPECT_EQ(adapteraddress(connect().get()), address);
    }
    EXPECT_EQ(adapteraddress(nullptr), "") << "without a connection";
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
