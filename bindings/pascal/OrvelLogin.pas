{ The login library for Delphi and Free Pascal, in this one unit, over the plain functions of orvelloginc.dll. For 32-bit
  Windows programs. }
unit OrvelLogin;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}

interface

uses
  SysUtils;

type
  { A failure that the login manager itself reported: a refused password, a server that does not answer. }
  ELoginManager = class(Exception)
  private
    FCode: Integer;
  public
    { The manager's number, 0 to 8; 6 also if the manager returned no record, 8 also for any other number. }
    property Code: Integer read FCode;
  end;

  { Any other failure: an exception of the managed runtime, or a runtime that could not be started. }
  ELoginRuntime = class(Exception)
  private
    FTypeName: WideString;
    FText: WideString;
    FHResult: Integer;
  public
    { Full name of the managed exception's type; empty if there was no managed exception. }
    property TypeName: WideString read FTypeName;
    { The exception's message. UTF-16, whereas Message may lose characters outside the code page. }
    property Text: WideString read FText;
    property HResult: Integer read FHResult;
  end;

  { The login manager's data about a signed-in user. }
  TLoginResponse = record
    StatusDescription: WideString; { outcome of the sign-in, as the manager phrased it }
    UserName: WideString;
    FirstName: WideString;
    LastName: WideString;
    RowId: WideString; { identifier of the user's record on the platform }
    AliasName: WideString;
    DomainName: WideString; { empty when the account has none }
  end;

  { Called for each sign-in or sign-out, on whatever thread the manager reports it, with the context that was passed to
    Create. It must not let an exception escape. }
  TLoginEvent = procedure(Context: Pointer); stdcall;

  { Signs a user in to the online account service. Failures are the two exceptions above. For what a method does while
    offline, or with a null from the manager, see the function of the same name in orvelloginc.h.

    A client may be used from any thread, but only from one at a time. Freeing it does not sign out. }
  TLoginManagerClient = class
  private
    FClient: Pointer;
    function GetOfflineMode: Boolean;
    procedure SetOfflineMode(Value: Boolean);
  public
    { The callbacks of the client whose manager was created last serve all clients, even after that client is freed, so
      contexts must stay valid until the program ends. Language: 0 to 13, as the manager numbers them. }
    constructor Create(OnLogin, OnLogout: TLoginEvent; LoginContext: Pointer = nil; LogoutContext: Pointer = nil;
      Language: Integer = 0);
    destructor Destroy; override;

    function Login: TLoginResponse; overload;
    function Login(const UserName, Password: WideString): TLoginResponse; overload;
    function GetLoggedInUser(LastLogin: Boolean): TLoginResponse;
    procedure Logout;

    function FormatAccessUrl(const TargetUrl: WideString): WideString;
    function GetAccessToken: WideString;
    function GetPlatformUrl: WideString;
    function GetRegistryUrl: WideString;
    function GetKelpaUrl: WideString;
    function GetTenantName: WideString;
    function GetPassportUrl: WideString;
    function GetCasCookie: WideString;
    function GetMyAppsUrl: WideString;
    function GetTenantId: WideString;
    function GetTenantIds: WideString;
    function GetLoginTicket(const SpaceUrl: WideString): WideString;
    function GetSpaceUrl: WideString;

    procedure StopDnmListener;
    procedure DunmoreLoginBrowser(const Server, ClientId: WideString);
    function GetDnmAccessToken: WideString;
    function IsDunmorePlatformTokenExpired(const Token: WideString): Boolean;

    property OfflineMode: Boolean read GetOfflineMode write SetOfflineMode;
  end;

implementation

const
  Dll = 'orvelloginc.dll';
  Reported = 1;
  NoMemory = 3;

type
  { A WideString is a BSTR: the library stores its texts in the fields, which free them. }
  TFailure = record
    Size: Integer;
    Code: Integer;
    HResult: Integer;
    TypeName: WideString;
    Message: WideString;
    { without the last field of the C structure, the text in UTF-8, which Size tells the library }
  end;

  TRecord = record
    Size: Integer;
    Response: TLoginResponse;
  end;

  TTextFunction = function(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  TTextOfTextFunction = function(Client: Pointer; Argument: PWideChar; Length: Integer; out Text: WideString;
    var Failure: TFailure): Integer; stdcall;

function orvellogin_create(OnLogin: TLoginEvent; LoginContext: Pointer; OnLogout: TLoginEvent; LogoutContext: Pointer;
  Language: Integer; out Client: Pointer; var Failure: TFailure): Integer; stdcall; external Dll;
procedure orvellogin_destroy(Client: Pointer); stdcall; external Dll;
function orvellogin_login(Client: Pointer; var Response: TRecord; var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_loginWithPassword(Client: Pointer; UserName: PWideChar; UserNameLength: Integer;
  Password: PWideChar; PasswordLength: Integer; var Response: TRecord; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getLoggedInUser(Client: Pointer; LastLogin: Integer; var Response: TRecord;
  var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_logout(Client: Pointer; var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_getAccessToken(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getPlatFormURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getRegistryURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getKelpaURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getTenantName(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getPassportURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getCASCookie(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getmyAppsURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getTenantId(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getTenantIds(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getSpaceURL(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_getDNMAccessToken(Client: Pointer; out Text: WideString; var Failure: TFailure): Integer; stdcall;
  external Dll;
function orvellogin_formatAccessUrl(Client: Pointer; Argument: PWideChar; Length: Integer; out Text: WideString;
  var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_getLoginTicket(Client: Pointer; Argument: PWideChar; Length: Integer; out Text: WideString;
  var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_stopDNMListener(Client: Pointer; var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_DunmoreLoginBrowser(Client: Pointer; Server: PWideChar; ServerLength: Integer; ClientId: PWideChar;
  ClientIdLength: Integer; var Failure: TFailure): Integer; stdcall; external Dll;
function orvellogin_isDunmorePlatformTokenExpired(Client: Pointer; Token: PWideChar; Length: Integer;
  out Expired: Integer; var Failure: TFailure): Integer; stdcall; external Dll;
procedure orvellogin_setOrvelOfflineMode(Client: Pointer; Offline: Integer); stdcall; external Dll;
function orvellogin_isOrvelOfflineMode(Client: Pointer): Integer; stdcall; external Dll;

{ Raises the exception for the result of a call, unless it is 0. }
procedure Check(Ended: Integer; const Failure: TFailure);
var
  Refused: ELoginManager;
  Failed: ELoginRuntime;
begin
  case Ended of
    0: ;
    Reported:
      begin
        Refused := ELoginManager.Create(Failure.Message);
        Refused.FCode := Failure.Code;
        raise Refused;
      end;
    NoMemory: OutOfMemoryError;
  else
    if Failure.TypeName = '' then
      Failed := ELoginRuntime.Create(Failure.Message)
    else
      Failed := ELoginRuntime.Create(Failure.TypeName + ': ' + Failure.Message);
    Failed.FTypeName := Failure.TypeName;
    Failed.FText := Failure.Message;
    Failed.FHResult := Failure.HResult;
    raise Failed;
  end;
end;

{ Only sets the size: the compiler initialises the strings of a new record to nil, so the library overwrites nothing that
  would have to be freed. }
procedure Prepare(var Failure: TFailure); overload;
begin
  Failure.Size := SizeOf(Failure);
end;

procedure Prepare(var Response: TRecord); overload;
begin
  Response.Size := SizeOf(Response);
end;

function TextOf(Client: Pointer; Get: TTextFunction): WideString; overload;
var
  Failure: TFailure;
begin
  Prepare(Failure);
  Check(Get(Client, Result, Failure), Failure);
end;

function TextOf(Client: Pointer; Get: TTextOfTextFunction; const Argument: WideString): WideString; overload;
var
  Failure: TFailure;
begin
  Prepare(Failure);
  Check(Get(Client, PWideChar(Argument), Length(Argument), Result, Failure), Failure);
end;

constructor TLoginManagerClient.Create(OnLogin, OnLogout: TLoginEvent; LoginContext, LogoutContext: Pointer;
  Language: Integer);
var
  Failure: TFailure;
begin
  inherited Create;
  Prepare(Failure);
  Check(orvellogin_create(OnLogin, LoginContext, OnLogout, LogoutContext, Language, FClient, Failure), Failure);
end;

destructor TLoginManagerClient.Destroy;
begin
  orvellogin_destroy(FClient);
  inherited Destroy;
end;

function TLoginManagerClient.Login: TLoginResponse;
var
  Response: TRecord;
  Failure: TFailure;
begin
  Prepare(Response);
  Prepare(Failure);
  Check(orvellogin_login(FClient, Response, Failure), Failure);
  Result := Response.Response;
end;

function TLoginManagerClient.Login(const UserName, Password: WideString): TLoginResponse;
var
  Response: TRecord;
  Failure: TFailure;
begin
  Prepare(Response);
  Prepare(Failure);
  Check(orvellogin_loginWithPassword(FClient, PWideChar(UserName), Length(UserName), PWideChar(Password),
    Length(Password), Response, Failure), Failure);
  Result := Response.Response;
end;

function TLoginManagerClient.GetLoggedInUser(LastLogin: Boolean): TLoginResponse;
var
  Response: TRecord;
  Failure: TFailure;
begin
  Prepare(Response);
  Prepare(Failure);
  Check(orvellogin_getLoggedInUser(FClient, Ord(LastLogin), Response, Failure), Failure);
  Result := Response.Response;
end;

procedure TLoginManagerClient.Logout;
var
  Failure: TFailure;
begin
  Prepare(Failure);
  Check(orvellogin_logout(FClient, Failure), Failure);
end;

procedure TLoginManagerClient.StopDnmListener;
var
  Failure: TFailure;
begin
  Prepare(Failure);
  Check(orvellogin_stopDNMListener(FClient, Failure), Failure);
end;

procedure TLoginManagerClient.DunmoreLoginBrowser(const Server, ClientId: WideString);
var
  Failure: TFailure;
begin
  Prepare(Failure);
  Check(orvellogin_DunmoreLoginBrowser(FClient, PWideChar(Server), Length(Server), PWideChar(ClientId),
    Length(ClientId), Failure), Failure);
end;

function TLoginManagerClient.IsDunmorePlatformTokenExpired(const Token: WideString): Boolean;
var
  Failure: TFailure;
  Expired: Integer;
begin
  Prepare(Failure);
  Check(orvellogin_isDunmorePlatformTokenExpired(FClient, PWideChar(Token), Length(Token), Expired, Failure), Failure);
  Result := Expired <> 0;
end;

function TLoginManagerClient.GetOfflineMode: Boolean;
begin
  Result := orvellogin_isOrvelOfflineMode(FClient) <> 0;
end;

procedure TLoginManagerClient.SetOfflineMode(Value: Boolean);
begin
  orvellogin_setOrvelOfflineMode(FClient, Ord(Value));
end;

function TLoginManagerClient.FormatAccessUrl(const TargetUrl: WideString): WideString;
begin
  Result := TextOf(FClient, orvellogin_formatAccessUrl, TargetUrl);
end;

function TLoginManagerClient.GetLoginTicket(const SpaceUrl: WideString): WideString;
begin
  Result := TextOf(FClient, orvellogin_getLoginTicket, SpaceUrl);
end;

function TLoginManagerClient.GetAccessToken: WideString;
begin
  Result := TextOf(FClient, orvellogin_getAccessToken);
end;

function TLoginManagerClient.GetPlatformUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getPlatFormURL);
end;

function TLoginManagerClient.GetRegistryUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getRegistryURL);
end;

function TLoginManagerClient.GetKelpaUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getKelpaURL);
end;

function TLoginManagerClient.GetTenantName: WideString;
begin
  Result := TextOf(FClient, orvellogin_getTenantName);
end;

function TLoginManagerClient.GetPassportUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getPassportURL);
end;

function TLoginManagerClient.GetCasCookie: WideString;
begin
  Result := TextOf(FClient, orvellogin_getCASCookie);
end;

function TLoginManagerClient.GetMyAppsUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getmyAppsURL);
end;

function TLoginManagerClient.GetTenantId: WideString;
begin
  Result := TextOf(FClient, orvellogin_getTenantId);
end;

function TLoginManagerClient.GetTenantIds: WideString;
begin
  Result := TextOf(FClient, orvellogin_getTenantIds);
end;

function TLoginManagerClient.GetSpaceUrl: WideString;
begin
  Result := TextOf(FClient, orvellogin_getSpaceURL);
end;

function TLoginManagerClient.GetDnmAccessToken: WideString;
begin
  Result := TextOf(FClient, orvellogin_getDNMAccessToken);
end;

end.
