{ The login library for Delphi (2009 or later) and Free Pascal, in this one unit, over the plain functions of
  orvelloginc.dll. }
unit OrvelLogin;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$MINENUMSIZE 4}

interface

uses
  Classes, SysUtils;

type
  { An error from the login manager: a refused password, a server that does not answer. }
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
    FTypeName: UnicodeString;
    FText: UnicodeString;
    FHResult: Integer;
  public
    { Full name of the managed exception's type; empty if there was no managed exception. }
    property TypeName: UnicodeString read FTypeName;
    { The exception's message. In Free Pascal, Message may lose characters outside the code page. }
    property Text: UnicodeString read FText;
    { The managed exception's HRESULT, or the one with which starting the runtime failed. }
    property HResult: Integer read FHResult;
  end;

  { The login manager's data about a signed-in user. }
  TLoginResponse = record
    StatusDescription: UnicodeString; { outcome of the sign-in, as the manager phrased it }
    UserName: UnicodeString; { account name }
    FirstName: UnicodeString;
    LastName: UnicodeString;
    RowId: UnicodeString; { identifier of the user's record on the platform }
    AliasName: UnicodeString; { display name }
    DomainName: UnicodeString; { empty when the account has none }
  end;

  { Called on whatever thread the manager raises its event. Must not let an exception escape, nor free a client. }
  TLoginEvent = procedure of object;

  { Signs a user in to the online account service. Methods block until the login manager answers, which can take minutes
    when a user signs in in a browser. A client may be used from any thread, but only from one at a time.

    An error from the login manager is an ELoginManager from Login, GetLoggedInUser, Logout, FormatAccessUrl,
    GetAccessToken and DunmoreLoginBrowser. Everything else, and that error from the other methods, is an ELoginRuntime.
    A null from the manager is an ELoginRuntime from FormatAccessUrl, GetLoginTicket and GetDnmAccessToken, and an empty
    string from the other getters. Invalid arguments are an EArgumentException. }
  TLoginManagerClient = class
  private
    FClient: Pointer;
    FOnLogin: TLoginEvent;
    FOnLogout: TLoginEvent;
    function GetOfflineMode: Boolean;
    procedure SetOfflineMode(Value: Boolean);
  public
    { Creates a client, but not yet its login manager: the first method that needs the manager does. The events of the
      client whose manager was created last serve all clients; when it is freed, those of another client do. Language: 0
      to 13, as the manager numbers them. }
    constructor Create(OnLogin: TLoginEvent = nil; OnLogout: TLoginEvent = nil; Language: Integer = 0);
    { Disposes the login manager, if one was created. Does not sign out. }
    destructor Destroy; override;
    { For a DLL that will be unloaded: call it before Free. Afterwards the events are not called any more. Waits for those
      that run on other threads. }
    procedure WithdrawCallbacks;
    { Version of the loaded orvelloginc.dll: 10203 is 1.2.3. }
    class function LibraryVersion: Integer;

    { Signs in without credentials. The manager decides how (a remembered user, a browser). }
    function Login: TLoginResponse; overload;
    { Signs in with account name and password. }
    function Login(const UserName, Password: UnicodeString): TLoginResponse; overload;
    { The signed-in user, without prompting; if LastLogin is True, does what Login does. }
    function GetLoggedInUser(LastLogin: Boolean): TLoginResponse;
    procedure Logout;

    { While OfflineMode is True, these return an empty string without calling the manager. }
    function FormatAccessUrl(const TargetUrl: UnicodeString): UnicodeString; { a URL that signs the user in when opened }
    function GetAccessToken: UnicodeString;
    function GetPlatformUrl: UnicodeString;
    function GetRegistryUrl: UnicodeString;
    function GetKelpaUrl: UnicodeString;
    function GetTenantName: UnicodeString;
    function GetPassportUrl: UnicodeString;
    function GetCasCookie: UnicodeString; { cookie of the central authentication service }
    function GetMyAppsUrl: UnicodeString;
    function GetTenantId: UnicodeString;
    function GetTenantIds: UnicodeString; { all tenants in one string, as the manager joins them }
    function GetLoginTicket(const SpaceUrl: UnicodeString): UnicodeString;
    function GetSpaceUrl: UnicodeString;

    { The consumer platform (Dunmore, DNM). }
    procedure StopDnmListener;
    { Signs in through the browser, at the platform's server, with the client identifier registered there. }
    procedure DunmoreLoginBrowser(const Server, ClientId: UnicodeString);
    function GetDnmAccessToken: UnicodeString;
    function IsDunmorePlatformTokenExpired(const Token: UnicodeString): Boolean;

    { False in a new client. Only affects this client. }
    property OfflineMode: Boolean read GetOfflineMode write SetOfflineMode;
  end;

implementation

const
  Dll = 'orvelloginc.dll';

type
  { The types of orvelloginc.h. }
  TResult = (Ok, ManagerError, Failed, NoMemory, BadCall);
  TCallback = procedure(Context: Pointer); stdcall;

  TOptions = record
    Size: Integer;
    Language: Integer;
    OnLogin: TCallback;
    LoginContext: Pointer;
    OnLogout: TCallback;
    LogoutContext: Pointer;
  end;

  TText = record
    Units: PWideChar;
    Length: Integer;
  end;

  PResponse = ^TResponse;
  TResponse = record
    Size: Integer;
    StatusDescription, UserName, FirstName, LastName, RowId, AliasName, DomainName: TText;
  end;

  PFailure = ^TFailure;
  TFailure = record
    Size: Integer;
    Ended: TResult;
    Code: Integer;
    HResult: Integer;
    TypeName: TText;
    Message: TText;
  end;

function orvellogin_version: Integer; stdcall; external Dll;
function orvellogin_create(const Options: TOptions; out Client: Pointer): TResult; stdcall; external Dll;
procedure orvellogin_destroy(Client: Pointer); stdcall; external Dll;
function orvellogin_lastFailure(Client: Pointer): PFailure; stdcall; external Dll;
procedure orvellogin_forget(Client: Pointer); stdcall; external Dll;
procedure orvellogin_withdrawCallbacks(Client: Pointer); stdcall; external Dll;
function orvellogin_login(Client: Pointer; out User: PResponse): TResult; stdcall; external Dll;
function orvellogin_loginWithPassword(Client: Pointer; UserName: PWideChar; UserNameLength: Integer;
  Password: PWideChar; PasswordLength: Integer; out User: PResponse): TResult; stdcall; external Dll;
function orvellogin_getLoggedInUser(Client: Pointer; LastLogin: Integer; out User: PResponse): TResult; stdcall;
  external Dll;
function orvellogin_logout(Client: Pointer): TResult; stdcall; external Dll;
function orvellogin_formatAccessUrl(Client: Pointer; Argument: PWideChar; Length: Integer; out Text: TText): TResult;
  stdcall; external Dll;
function orvellogin_getAccessToken(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getPlatFormURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getRegistryURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getKelpaURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getTenantName(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getPassportURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getCASCookie(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getmyAppsURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getTenantId(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getTenantIds(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_getLoginTicket(Client: Pointer; Argument: PWideChar; Length: Integer; out Text: TText): TResult;
  stdcall; external Dll;
function orvellogin_getSpaceURL(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_stopDNMListener(Client: Pointer): TResult; stdcall; external Dll;
function orvellogin_DunmoreLoginBrowser(Client: Pointer; Server: PWideChar; ServerLength: Integer; ClientId: PWideChar;
  ClientIdLength: Integer): TResult; stdcall; external Dll;
function orvellogin_getDNMAccessToken(Client: Pointer; out Text: TText): TResult; stdcall; external Dll;
function orvellogin_isDunmorePlatformTokenExpired(Client: Pointer; Token: PWideChar; Length: Integer;
  out Expired: Integer): TResult; stdcall; external Dll;
procedure orvellogin_setOrvelOfflineMode(Client: Pointer; Offline: Integer); stdcall; external Dll;
function orvellogin_isOrvelOfflineMode(Client: Pointer): Integer; stdcall; external Dll;

var
  { The clients that exist. The library calls the callbacks of a client even after its end: those of the newest that is
    left are called instead. Never freed, because another thread may raise an event while the program ends. }
  Clients: TThreadList;

procedure RaiseEvent(Client: Pointer; Logout: Boolean);
var
  List: TList;
  I: Integer;
  Event: TLoginEvent;
begin
  Event := nil;
  List := Clients.LockList;
  I := List.IndexOf(Client);
  if I < 0 then
    I := List.Count - 1;
  if I >= 0 then
    if Logout then
      Event := TLoginManagerClient(List[I]).FOnLogout
    else
      Event := TLoginManagerClient(List[I]).FOnLogin;
  Clients.UnlockList;
  if Assigned(Event) then
    Event;
end;

procedure LoggedIn(Client: Pointer); stdcall;
begin
  RaiseEvent(Client, False);
end;

procedure LoggedOut(Client: Pointer); stdcall;
begin
  RaiseEvent(Client, True);
end;

function Copied(const Text: TText): UnicodeString;
begin
  SetString(Result, Text.Units, Text.Length);
end;

{ Raises the exception for the result of a call. }
procedure Check(Client: Pointer; Ended: TResult);
var
  Failure: PFailure;
  TypeName, Text: UnicodeString;
  Error: ELoginManager;
  RuntimeError: ELoginRuntime;
begin
  if Ended = Ok then
    Exit;
  Failure := orvellogin_lastFailure(Client);
  TypeName := Copied(Failure^.TypeName);
  Text := Copied(Failure^.Message);
  case Ended of
    ManagerError:
      begin
        Error := ELoginManager.Create(string(Text));
        Error.FCode := Failure^.Code;
        raise Error;
      end;
    Failed:
      begin
        if TypeName = '' then
          RuntimeError := ELoginRuntime.Create(string(Text))
        else
          RuntimeError := ELoginRuntime.Create(string(TypeName + ': ' + Text));
        RuntimeError.FTypeName := TypeName;
        RuntimeError.FText := Text;
        RuntimeError.FHResult := Failure^.HResult;
        raise RuntimeError;
      end;
    NoMemory: OutOfMemoryError;
  else
    raise EArgumentException.Create(string(Text));
  end;
end;

{ The results of a call: copied, then wiped in the library. }
function Taken(Client: Pointer; const Text: TText): UnicodeString; overload;
begin
  Result := Copied(Text);
  orvellogin_forget(Client);
end;

function Taken(Client: Pointer; User: PResponse): TLoginResponse; overload;
begin
  Result.StatusDescription := Copied(User^.StatusDescription);
  Result.UserName := Copied(User^.UserName);
  Result.FirstName := Copied(User^.FirstName);
  Result.LastName := Copied(User^.LastName);
  Result.RowId := Copied(User^.RowId);
  Result.AliasName := Copied(User^.AliasName);
  Result.DomainName := Copied(User^.DomainName);
  orvellogin_forget(Client);
end;

type
  TGetter = function(Client: Pointer; out Text: TText): TResult; stdcall;

function TextOf(Client: Pointer; Get: TGetter): UnicodeString;
var
  Text: TText;
begin
  Check(Client, Get(Client, Text));
  Result := Taken(Client, Text);
end;

constructor TLoginManagerClient.Create(OnLogin, OnLogout: TLoginEvent; Language: Integer);
var
  Options: TOptions;
  Ended: TResult;
begin
  inherited Create;
  FOnLogin := OnLogin;
  FOnLogout := OnLogout;
  FillChar(Options, SizeOf(Options), 0);
  Options.Size := SizeOf(Options);
  Options.Language := Language;
  Options.LoginContext := Self;
  Options.LogoutContext := Self;
  if Assigned(OnLogin) then
    Options.OnLogin := LoggedIn;
  if Assigned(OnLogout) then
    Options.OnLogout := LoggedOut;
  Clients.Add(Self);
  Ended := orvellogin_create(Options, FClient);
  Check(FClient, Ended);
end;

destructor TLoginManagerClient.Destroy;
begin
  orvellogin_destroy(FClient); { may still raise an event }
  Clients.Remove(Self);
  inherited Destroy;
end;

procedure TLoginManagerClient.WithdrawCallbacks;
begin
  orvellogin_withdrawCallbacks(FClient);
end;

class function TLoginManagerClient.LibraryVersion: Integer;
begin
  Result := orvellogin_version;
end;

function TLoginManagerClient.Login: TLoginResponse;
var
  User: PResponse;
begin
  Check(FClient, orvellogin_login(FClient, User));
  Result := Taken(FClient, User);
end;

function TLoginManagerClient.Login(const UserName, Password: UnicodeString): TLoginResponse;
var
  User: PResponse;
begin
  Check(FClient, orvellogin_loginWithPassword(FClient, PWideChar(UserName), Length(UserName), PWideChar(Password),
    Length(Password), User));
  Result := Taken(FClient, User);
end;

function TLoginManagerClient.GetLoggedInUser(LastLogin: Boolean): TLoginResponse;
var
  User: PResponse;
begin
  Check(FClient, orvellogin_getLoggedInUser(FClient, Ord(LastLogin), User));
  Result := Taken(FClient, User);
end;

procedure TLoginManagerClient.Logout;
begin
  Check(FClient, orvellogin_logout(FClient));
end;

procedure TLoginManagerClient.StopDnmListener;
begin
  Check(FClient, orvellogin_stopDNMListener(FClient));
end;

procedure TLoginManagerClient.DunmoreLoginBrowser(const Server, ClientId: UnicodeString);
begin
  Check(FClient, orvellogin_DunmoreLoginBrowser(FClient, PWideChar(Server), Length(Server), PWideChar(ClientId),
    Length(ClientId)));
end;

function TLoginManagerClient.IsDunmorePlatformTokenExpired(const Token: UnicodeString): Boolean;
var
  Expired: Integer;
begin
  Check(FClient, orvellogin_isDunmorePlatformTokenExpired(FClient, PWideChar(Token), Length(Token), Expired));
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

function TLoginManagerClient.FormatAccessUrl(const TargetUrl: UnicodeString): UnicodeString;
var
  Text: TText;
begin
  Check(FClient, orvellogin_formatAccessUrl(FClient, PWideChar(TargetUrl), Length(TargetUrl), Text));
  Result := Taken(FClient, Text);
end;

function TLoginManagerClient.GetLoginTicket(const SpaceUrl: UnicodeString): UnicodeString;
var
  Text: TText;
begin
  Check(FClient, orvellogin_getLoginTicket(FClient, PWideChar(SpaceUrl), Length(SpaceUrl), Text));
  Result := Taken(FClient, Text);
end;

function TLoginManagerClient.GetAccessToken: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getAccessToken);
end;

function TLoginManagerClient.GetPlatformUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getPlatFormURL);
end;

function TLoginManagerClient.GetRegistryUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getRegistryURL);
end;

function TLoginManagerClient.GetKelpaUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getKelpaURL);
end;

function TLoginManagerClient.GetTenantName: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getTenantName);
end;

function TLoginManagerClient.GetPassportUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getPassportURL);
end;

function TLoginManagerClient.GetCasCookie: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getCASCookie);
end;

function TLoginManagerClient.GetMyAppsUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getmyAppsURL);
end;

function TLoginManagerClient.GetTenantId: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getTenantId);
end;

function TLoginManagerClient.GetTenantIds: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getTenantIds);
end;

function TLoginManagerClient.GetSpaceUrl: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getSpaceURL);
end;

function TLoginManagerClient.GetDnmAccessToken: UnicodeString;
begin
  Result := TextOf(FClient, orvellogin_getDNMAccessToken);
end;

initialization
  Clients := TThreadList.Create;

end.
