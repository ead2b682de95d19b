#pragma once

#include <windows.h>

#include <wbemcli.h>

/// The members of WMI's interfaces that the library has no use for.
#define UNUSED(member, ...)                                  \
    HRESULT STDMETHODCALLTYPE member(__VA_ARGS__) override { \
        return E_NOTIMPL;                                    \
    }

namespace stubs {

class services : public IWbemServices {
public:
    UNUSED(OpenNamespace, BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**);
    UNUSED(CancelAsyncCall, IWbemObjectSink*);
    UNUSED(QueryObjectSink, LONG, IWbemObjectSink**);
    UNUSED(GetObject, BSTR, LONG, IWbemContext*, IWbemClassObject**, IWbemCallResult**);
    UNUSED(GetObjectAsync, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(PutClass, IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**);
    UNUSED(PutClassAsync, IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(DeleteClass, BSTR, LONG, IWbemContext*, IWbemCallResult**);
    UNUSED(DeleteClassAsync, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(CreateClassEnum, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**);
    UNUSED(CreateClassEnumAsync, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(PutInstance, IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**);
    UNUSED(PutInstanceAsync, IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(DeleteInstance, BSTR, LONG, IWbemContext*, IWbemCallResult**);
    UNUSED(DeleteInstanceAsync, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(CreateInstanceEnum, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**);
    UNUSED(CreateInstanceEnumAsync, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(ExecQueryAsync, BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(ExecNotificationQuery, BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**);
    UNUSED(ExecNotificationQueryAsync, BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*);
    UNUSED(ExecMethod, BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemClassObject**, IWbemCallResult**);
    UNUSED(ExecMethodAsync, BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemObjectSink*);
};

class object : public IWbemClassObject {
public:
    UNUSED(GetQualifierSet, IWbemQualifierSet**);
    UNUSED(Get, LPCWSTR, LONG, VARIANT*, CIMTYPE*, LONG*);
    UNUSED(Put, LPCWSTR, LONG, VARIANT*, CIMTYPE);
    UNUSED(Delete, LPCWSTR);
    UNUSED(GetNames, LPCWSTR, LONG, VARIANT*, SAFEARRAY**);
    UNUSED(GetPropertyQualifierSet, LPCWSTR, IWbemQualifierSet**);
    UNUSED(Clone, IWbemClassObject**);
    UNUSED(GetObjectText, LONG, BSTR*);
    UNUSED(SpawnDerivedClass, LONG, IWbemClassObject**);
    UNUSED(SpawnInstance, LONG, IWbemClassObject**);
    UNUSED(CompareTo, LONG, IWbemClassObject*);
    UNUSED(GetPropertyOrigin, LPCWSTR, BSTR*);
    UNUSED(InheritsFrom, LPCWSTR);
    UNUSED(GetMethod, LPCWSTR, LONG, IWbemClassObject**, IWbemClassObject**);
    UNUSED(PutMethod, LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*);
    UNUSED(DeleteMethod, LPCWSTR);
    UNUSED(BeginMethodEnumeration, LONG);
    UNUSED(NextMethod, LONG, BSTR*, IWbemClassObject**, IWbemClassObject**);
    UNUSED(EndMethodEnumeration, void);
    UNUSED(GetMethodQualifierSet, LPCWSTR, IWbemQualifierSet**);
    UNUSED(GetMethodOrigin, LPCWSTR, BSTR*);
};

class enumerator : public IEnumWbemClassObject {
public:
    UNUSED(Reset, void);
    UNUSED(NextAsync, ULONG, IWbemObjectSink*);
    UNUSED(Clone, IEnumWbemClassObject**);
    UNUSED(Skip, LONG, ULONG);
};

}  // namespace stubs

#undef UNUSED
