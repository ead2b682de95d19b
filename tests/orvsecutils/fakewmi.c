// In C, a COM object is a pointer to a table of functions. The tables here have the functions that the library calls;
// the others stay null, so that calling one ends the test.
#include "tests/orvsecutils/fakewmi.h"

static HRESULT give(void* object, void* target, HRESULT status) {
    fakewmi.references += SUCCEEDED(status);
    *(void**)target = SUCCEEDED(status) ? object : NULL;
    return status;
}
static ULONG STDMETHODCALLTYPE addref(void*) {
    return ++fakewmi.references;
}
static ULONG STDMETHODCALLTYPE release(void*) {
    return --fakewmi.references;
}
#define COUNTED(Interface) \
    .AddRef = (ULONG(STDMETHODCALLTYPE*)(Interface*))addref, .Release = (ULONG(STDMETHODCALLTYPE*)(Interface*))release

static HRESULT STDMETHODCALLTYPE begin(IWbemClassObject*, LONG) {
    fakewmi.properties = 1;
    ++fakewmi.references;  // end() gives it back
    return S_OK;
}
static HRESULT STDMETHODCALLTYPE nextproperty(IWbemClassObject*, LONG, BSTR* name, VARIANT* value, CIMTYPE*, LONG*) {
    if (fakewmi.properties-- == 0) {
        return fakewmi.afterproperty;
    }
    *name = SysAllocString(L"name");
    V_VT(value) = VT_BSTR;
    V_BSTR(value) = SysAllocString(fakewmi.value);
    return S_OK;
}
static HRESULT STDMETHODCALLTYPE end(IWbemClassObject*) {
    --fakewmi.references;
    return S_OK;
}
static IWbemClassObject object = {&(IWbemClassObjectVtbl){COUNTED(IWbemClassObject), .BeginEnumeration = begin,
                                                          .Next = nextproperty, .EndEnumeration = end}};

static HRESULT STDMETHODCALLTYPE nextobject(IEnumWbemClassObject*, LONG timeout, ULONG count, IWbemClassObject** next,
                                            ULONG*) {
    return timeout != -1 || count != 1 ? E_INVALIDARG
                                       : give(&object, next, fakewmi.objects-- ? S_OK : fakewmi.afterobject);
}
static IEnumWbemClassObject enumeration = {
    &(IEnumWbemClassObjectVtbl){COUNTED(IEnumWbemClassObject), .Next = nextobject}};

static HRESULT STDMETHODCALLTYPE setblanket(IClientSecurity*, IUnknown*, DWORD, DWORD, OLECHAR*, DWORD, DWORD, void*,
                                            DWORD) {
    return fakewmi.blanket;
}
static IClientSecurity security = {&(IClientSecurityVtbl){COUNTED(IClientSecurity), .SetBlanket = setblanket}};

static HRESULT STDMETHODCALLTYPE query(IWbemServices*, REFIID iid, void** target) {
    return give(&security, target, IsEqualIID(iid, &IID_IClientSecurity) ? S_OK : E_NOINTERFACE);
}
static HRESULT STDMETHODCALLTYPE execute(IWbemServices*, BSTR, BSTR, LONG, IWbemContext*,
                                         IEnumWbemClassObject** found) {
    fakewmi.objects = 1;
    return give(&enumeration, found, fakewmi.result);
}
static IWbemServices services = {
    &(IWbemServicesVtbl){COUNTED(IWbemServices), .QueryInterface = query, .ExecQuery = execute}};

static HRESULT STDMETHODCALLTYPE connectserver(IWbemLocator*, BSTR, BSTR, BSTR, BSTR, LONG, BSTR, IWbemContext*,
                                               IWbemServices** connected) {
    return give(&services, connected, fakewmi.connection);
}
static IWbemLocator locator = {&(IWbemLocatorVtbl){COUNTED(IWbemLocator), .ConnectServer = connectserver}};

static HRESULT createlocator(IWbemLocator** target) {
    return give(&locator, target, fakewmi.locator);
}

struct fakewmi fakewmi = {
    .source = createlocator, .afterobject = WBEM_S_FALSE, .afterproperty = WBEM_S_NO_MORE_DATA, .value = L"x"};
