#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

std::string adapteraddress(const wmi* connection) {
    std::vector<wmirow> rows;
    if (connection) {
        connection->query("SELECT MACAddress FROM Win32_NetworkAdapterConfiguration WHERE IPEnabled=TRUE", rows);
    }
    std::string address;
    for (const wmirow& row : rows) {
        const auto found = row.find("MACAddress");
        if (found != row.end()) {
            address = found->second;  // the last adapter wins, as in every version, so that the result does not change
        }
    }
    return address;
}

}  // namespace orvsecutils
