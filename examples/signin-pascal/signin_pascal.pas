{ Signs a user in and out through the library, and prints all that it returns. }
program signin_pascal;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  Windows, SysUtils, OrvelLogin;

procedure Show(const Name: string; const Value: UnicodeString);
var
  Shown: UnicodeString;
begin
  Shown := Value;
  if Shown = '' then
    Shown := '(empty)';
  WriteLn('  ', Format('%-18s ', [Name]), UTF8Encode(Shown));
end;

procedure ShowUser(const User: TLoginResponse);
begin
  Show('statusDescription', User.StatusDescription);
  Show('userName', User.UserName);
  Show('firstName', User.FirstName);
  Show('lastName', User.LastName);
  Show('rowId', User.RowId);
  Show('aliasName', User.AliasName);
  Show('domainName', User.DomainName);
end;

type
  { An event may be raised on any thread, so keep it short. It must not let an exception escape. }
  TEvents = class
    class procedure SignedIn;
    class procedure SignedOut;
  end;

class procedure TEvents.SignedIn;
begin
  WriteLn('  [sign-in callback, thread ', GetCurrentThreadId, ']');
end;

class procedure TEvents.SignedOut;
begin
  WriteLn('  [sign-out callback, thread ', GetCurrentThreadId, ']');
end;

procedure Run;
const
  { Greek letters as numbers, so that the code page that the compiler assumes does not matter. }
  GreekPassword: UnicodeString = #$03BA#$03C9#$03B4#$03B9#$03BA#$03CC#$03C2;
var
  Client: TLoginManagerClient;
begin
  WriteLn('Main thread ', GetCurrentThreadId);
  Client := TLoginManagerClient.Create(TEvents.SignedIn, TEvents.SignedOut);
  try
    WriteLn;
    WriteLn('A wrong password:');
    try
      Client.Login('ada@example.com', 'difference engine');
    except
      on Refused: ELoginManager do
        WriteLn('  refused: code ', Refused.Code);
    end;

    WriteLn;
    WriteLn('The right one:');
    ShowUser(Client.Login('ada@example.com', 'analytical engine'));

    WriteLn;
    WriteLn('What the sign-in established:');
    Show('access token', Client.GetAccessToken);
    Show('tenant', Client.GetTenantName);
    Show('tenant id', Client.GetTenantId);
    Show('tenant ids', Client.GetTenantIds);
    Show('CAS cookie', Client.GetCasCookie);
    Show('platform URL', Client.GetPlatformUrl);
    Show('registry URL', Client.GetRegistryUrl);
    Show('passport URL', Client.GetPassportUrl);
    Show('applications URL', Client.GetMyAppsUrl);
    Show('Kelpa URL', Client.GetKelpaUrl);
    Show('space URL', Client.GetSpaceUrl);
    Show('access URL', Client.FormatAccessUrl('https://space.example.com/plan'));
    Show('login ticket', Client.GetLoginTicket(Client.GetSpaceUrl));

    WriteLn;
    WriteLn('The consumer platform:');
    Client.DunmoreLoginBrowser('https://dunmore.example.com', 'signin-example');
    Show('token', Client.GetDnmAccessToken);
    if Client.IsDunmorePlatformTokenExpired(Client.GetDnmAccessToken) then
      Show('expired', 'yes')
    else
      Show('expired', 'no');
    Client.StopDnmListener;

    WriteLn;
    WriteLn('While offline, getters return empty strings without calling the manager:');
    Client.OfflineMode := True;
    Show('access token', Client.GetAccessToken);
    Show('platform URL', Client.GetPlatformUrl);
    Client.OfflineMode := False;

    WriteLn;
    WriteLn('Another user, whose account has no domain:');
    ShowUser(Client.Login('zoe@example.com', GreekPassword));

    WriteLn;
    WriteLn('Signing out:');
    Client.Logout;
    try
      Client.GetLoggedInUser(False);
    except
      on Nobody: ELoginManager do
        WriteLn('  nobody is signed in: code ', Nobody.Code);
    end;
  finally
    Client.Free;
  end;
end;

begin
  SetConsoleOutputCP(CP_UTF8);
  SetTextCodePage(Output, CP_UTF8);
  SetTextCodePage(ErrOutput, CP_UTF8);
  try
    Run;
  except
    on Failed: ELoginRuntime do
    begin
      { A managed exception; the text of any other failure has the number already. }
      if Failed.TypeName <> '' then
      begin
        WriteLn(ErrOutput, UTF8Encode(Failed.TypeName + ': ' + Failed.Text));
        WriteLn(ErrOutput, '  HRESULT 0x', IntToHex(Failed.HResult, 8));
      end
      else
        WriteLn(ErrOutput, UTF8Encode(Failed.Text));
      Halt(1);
    end;
    on Failed: Exception do
    begin
      WriteLn(ErrOutput, Failed.Message);
      Halt(1);
    end;
  end;
end.
