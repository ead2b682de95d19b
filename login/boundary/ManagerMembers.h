#pragma once

#include <cstdint>

#include "login/boundary/Boundary.h"

namespace OrvelLoginClientCLR {

/// The members of the manager, one row each: what the exported class, the bridge and the plain functions do with a
/// member is decided here. script/check-members compares the rows with every other place that names a member.
///
/// The managed part finds each member by its name, so the order does not matter. A name that it lacks fails the
/// binding.
struct ManagerMembers {
    ManagedMember create{L"create"};    ///< result: ManagedCreation
    ManagedMember dispose{L"dispose"};  ///< releases the handle, too

    ManagedMember login{L"login", translated, nullIsNoResponse, calledOffline};
    ManagedMember loginWithPassword{L"loginWithPassword", translated, nullIsNoResponse, calledOffline};
    ManagedMember getLoggedInUser{L"getLoggedInUser", translated, nullIsNoResponse, calledOffline};
    ManagedMember Logout{L"Logout", translated, noNull, calledOffline};
    ManagedMember getAccessToken{L"getAccessToken", translated, nullIsEmpty, emptyOffline};
    ManagedMember formatAccessURL{L"formatAccessURL", translated, nullFails, emptyOffline};
    ManagedMember getPlatformURL{L"getPlatformURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getRegistryURL{L"getRegistryURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getKelpaURL{L"getKelpaURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getTenantName{L"getTenantName", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getPassportURL{L"getPassportURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getCASCookie{L"getCASCookie", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getmyAppsURL{L"getmyAppsURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getTenantId{L"getTenantId", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getTenantIds{L"getTenantIds", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getSpaceURL{L"getSpaceURL", untranslated, nullIsEmpty, emptyOffline};
    ManagedMember getLoginTicket{L"getLoginTicket", untranslated, nullFails, emptyOffline};
    ManagedMember DunmoreLoginBrowser{L"DunmoreLoginBrowser", translated, noNull, calledOffline};
    ManagedMember stopDNMListener{L"stopDNMListener", untranslated, noNull, calledOffline};
    ManagedMember isDunmorePlatformTokenExpired{L"isDunmorePlatformTokenExpired", untranslated, noNull, calledOffline};
    ManagedMember getDNMAccessToken{L"getDNMAccessToken", untranslated, nullFails, calledOffline};
};

constexpr std::int32_t managerMemberCount = sizeof(ManagerMembers) / sizeof(ManagedMember);

/// A row of the table.
using Member = ManagedMember ManagerMembers::*;

/// The rows before they are bound, for what is decided without the managed part.
inline constexpr ManagerMembers unboundMembers{};

/// The fields of the record, one row each, for a native record whose fields have the same names. A null in a field
/// becomes an empty string or fails the conversion of the record.
template <class NativeRecord>
struct RecordField {
    decltype(NativeRecord::userName) NativeRecord::* target;
    ManagedString ManagedRecord::* source;
    NullRule nullRule;
};
template <class NativeRecord>
inline constexpr RecordField<NativeRecord> recordFields[] = {
    {&NativeRecord::statusDescription, &ManagedRecord::statusDescription, nullFails},
    {&NativeRecord::userName, &ManagedRecord::userName, nullFails},
    {&NativeRecord::firstName, &ManagedRecord::firstName, nullFails},
    {&NativeRecord::lastName, &ManagedRecord::lastName, nullFails},
    {&NativeRecord::rowId, &ManagedRecord::rowId, nullFails},
    {&NativeRecord::aliasName, &ManagedRecord::aliasName, nullFails},
    {&NativeRecord::domainName, &ManagedRecord::domainName, nullIsEmpty},
};

}  // namespace OrvelLoginClientCLR
