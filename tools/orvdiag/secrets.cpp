#include "tools/orvdiag/secrets.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace orvdiag {

namespace {

// The words that make a name one of a secret: in lower case and in the singular. The tables differ in where in a word,
// or in two joined words, the text must stand: "tokenizer", "bypass", "monkey" and "secretary" must not match.
constexpr std::string_view anywhere[] = {"password", "passwd",   "passphrase", "passcode",
                                         "passwort", "kennwort", "pwd",        "credential"};
constexpr std::string_view atend[] = {
    "secret",     "token",     "ticket",     "cookie",        "otp",        "sessionid",        "sessid",
    "apikey",     "accesskey", "privatekey", "secretkey",     "sharedkey",  "authkey",          "sessionkey",
    "licensekey", "masterkey", "productkey", "encryptionkey", "accountkey", "passkey",          "authcode",
    "accesscode", "logincode", "pincode",    "securitycode",  "userpin",    "verificationcode", "authorizationcode",
    "userpass",   "dbpass"};
constexpr std::string_view alone[] = {"pass", "pin", "jwt", "bearer", "authorization", "cvv", "puk"};

// What a name ends in that only tells about a secret, which support must see.
constexpr std::string_view harmless[] = {
    "timeout",  "length", "lifetime", "expiry",      "expire",      "expiration",  "policy",    "count",
    "type",     "url",    "uri",      "endpoint",    "provider",    "enabled",     "required",  "server",
    "host",     "port",   "size",     "limit",       "format",      "path",        "file",      "folder",
    "name",     "domain", "day",      "minute",      "second",      "retrie",      "attempt",   "publickey",
    "keytoken", "hotkey", "sortkey",  "registrykey", "shortcutkey", "functionkey", "primarykey"};

// Parameters that are secrets only in the query of an address.
constexpr std::string_view queryonly[] = {"code", "sig", "signature", "assertion", "samlresponse"};

// What precedes the secret itself in the value of an Authorization header.
constexpr std::string_view schemes[] = {"basic", "bearer", "digest", "negotiate", "ntlm"};

// Calls whose arguments are a user and then a password.
constexpr std::string_view logincalls[] = {"login", "logon", "signin", "authenticate"};

// What the tickets of single sign-on servers begin with, as in "ST-1856-aA5Yuvrxzpv8Tau1cYQ7-server".
constexpr std::string_view ticketprefixes[] = {"ST", "PT", "TGT", "TGC", "PGT", "PGTIOU"};

// Values that say that there is no secret.
constexpr std::string_view novalues[] = {"", "null", "(null)", "true", "false", hidden};

constexpr std::string_view blanks = " \t";

constexpr auto islower = [](char c) { return c >= 'a' && c <= 'z'; };
constexpr auto isupper = [](char c) { return c >= 'A' && c <= 'Z'; };
constexpr auto isdigit = [](char c) { return c >= '0' && c <= '9'; };
// Letters outside ASCII are all alike.
constexpr auto isletter = [](char c) { return islower(c) || isupper(c) || (c & 0x80) != 0; };
constexpr auto isofname = [](char c) { return isletter(c) || isdigit(c) || c == '_' || c == '-' || c == '.'; };

std::string lowercase(std::string_view text) {
    std::string result(text);
    std::transform(text.begin(), text.end(), result.begin(),
                   [](char c) { return isupper(c) ? static_cast<char>(c + 'a' - 'A') : c; });
    return result;
}

template <class Table>
bool contains(const Table& table, std::string_view text) {
    return std::find(std::begin(table), std::end(table), text) != std::end(table);
}

// The words of a name, in lower case and in the singular: "CASCookies_2of" has cas, cookie and of; "PINs" has pin.
std::vector<std::string> wordsof(std::string_view name) {
    const auto at = [name](std::size_t i) { return i < name.size() ? name[i] : '\0'; };
    std::vector<std::string> words;
    for (std::size_t i = 0, end; i < name.size(); i = end) {
        for (end = i + 1; isletter(name[i]) && isletter(at(end)); ++end) {
            const bool plural = at(end + 1) == 's' && !isletter(at(end + 2));
            if (isupper(name[end]) && (!isupper(name[end - 1]) || (islower(at(end + 1)) && !plural))) {
                break;
            }
        }
        if (isletter(name[i])) {
            const std::string word = lowercase(name.substr(i, end - i));
            const bool several = word.size() > 2 && word.back() == 's' && word[word.size() - 2] != 's';  // not "pass"
            words.push_back(word.substr(0, word.size() - (several ? 1 : 0)));
        }
    }
    return words;
}

// Whether the words from `from` on name a secret; the word in front of them may belong to the name.
bool namesasecret(const std::vector<std::string>& words, std::size_t from) {
    for (std::size_t i = words.size(); i-- > from;) {
        const bool last = i + 1 == words.size();
        const std::string pair = i > 0 ? words[i - 1] + words[i] : words[i];
        if (last && (contains(harmless, words[i]) || contains(harmless, pair))) {
            return false;
        }
        for (const std::string& word : {words[i], pair}) {
            if (contains(alone, word) || (last && word == "key") ||
                std::any_of(std::begin(anywhere), std::end(anywhere),
                            [&](std::string_view part) { return word.find(part) != std::string::npos; }) ||
                std::any_of(std::begin(atend), std::end(atend), [&](std::string_view part) {
                    return word.size() >= part.size() && word.substr(word.size() - part.size()) == part;
                })) {
                return true;
            }
        }
    }
    return false;
}

// A token or ticket that is known by its form: "eyJ" begins each JSON web token.
bool istoken(std::string_view name) {
    const std::size_t dash = std::min(name.find('-'), name.size() - 1);
    return name.size() >= 16 &&
           (name.substr(0, 3) == "eyJ" || (contains(ticketprefixes, name.substr(0, dash)) && isdigit(name[dash + 1])));
}

// Goes through a string from name to name, and copies it without its secrets. Looks ahead of a name only so far that
// the time for a string is proportional to its length.
class masking {
public:
    explicit masking(std::string_view textIn) : text(textIn) {}

    std::string result() {
        for (std::size_t end; at < text.size(); at = std::max(at, end)) {
            end = endofname(at);
            if (at >= callresult) {
                hide(at, endofline(at));
                callresult = std::string_view::npos;
            } else if (end == at) {
                ++end;
                if (text[at] == '@') {
                    address();
                }
            } else {
                // The first two characters of a name may belong to what precedes it, as in "%26name".
                const std::size_t begin = at > 0 && text[at - 1] == '%' && end - at > 2 ? at + 2 : at;
                name(begin, end);
                previous = begin;
                previousend = end;
            }
        }
        return copied + std::string(text.substr(done));
    }

private:
    char character(std::size_t i) const { return i < text.size() ? text[i] : '\0'; }

    bool follows(std::size_t i, std::string_view expected) const {
        return i < text.size() && lowercase(text.substr(i, expected.size())) == expected;
    }

    // The position of the first character that is not one of these.
    std::size_t after(std::string_view characters, std::size_t i) const {
        return std::min(text.find_first_not_of(characters, i), text.size());
    }

    std::size_t endofname(std::size_t i) const {
        while (i < text.size() && isofname(text[i])) {
            ++i;
        }
        return i;
    }

    std::size_t endofline(std::size_t i) const { return std::min(text.find_first_of("\r\n", i), text.size()); }

    // The end of a value that is not in quotes. `list`: values are separated by semicolons only, and may contain
    // blanks. `encoded`: as in the query of an address that is itself a parameter.
    std::size_t endofvalue(std::size_t i, bool list, bool encoded = false, bool cookies = false) const {
        for (; i < text.size(); ++i) {
            const char c = text[i];
            const char next = character(i + 1);
            if (c == '"' || c == '<' || c == '\r' || c == '\n' || (c == ';' && list) ||
                (encoded && (follows(i, "%26") || follows(i, "%22")))) {
                break;
            }
            if (list) {
                continue;
            }
            if (c == ';' && cookies && character(endofname(after(blanks, i + 1))) == '=') {
                i = after(blanks, i + 1);
                continue;
            }
            const bool closing = c == ')' || c == ']' || c == '}' || c == '>' || c == '|' || c == '\'';
            const bool comma = c == ',' && (next == '\0' || next == ' ' || next == '\t' || next == '"' ||
                                            character(endofname(i + 1)) == '=' || character(endofname(i + 1)) == ':');
            if (c == ' ' || c == '\t' || c == '&' || c == ';' || comma || (closing && !isofname(next))) {
                break;
            }
        }
        return i;
    }

    void hide(std::size_t begin, std::size_t end) {
        if (!contains(novalues, lowercase(text.substr(begin, end - begin)))) {
            copied += std::string(text.substr(done, begin - done)) + hidden;
            done = end;
        }
        at = std::max(at, end);
    }

    void hidevalue(std::size_t value, bool list, bool encoded, bool cookies) {
        // A quotation mark may be escaped, doubled or encoded; the closing one is the same.
        const std::size_t mark = after("\\", value);
        std::size_t length = follows(value, "%22") ? 3 : 0;
        if (character(mark) == '"' || character(mark) == '\'') {
            const bool doubled = character(mark + 1) == text[mark] && isofname(character(mark + 2));
            length = mark + (doubled ? 2 : 1) - value;
        }
        const char open = character(value);
        if (length > 0) {
            const std::string_view quote = text.substr(value, length);
            value += length;
            std::size_t end = text.find(quote, value);
            while (length == 1 && end != std::string_view::npos &&
                   (text[end - 1] == '\\' || character(end + 1) == open)) {
                end = text.find(quote, end + (text[end - 1] == '\\' ? 1 : 2));
            }
            hide(value, std::min(end, text.size()));
        } else if (open == '{' || open == '[') {
            hide(value + 1, std::min(text.find(open == '{' ? '}' : ']', value), text.size()));
        } else {
            // The first value of a list has no semicolon in front of it.
            const std::string_view ahead = text.substr(value, 256);
            const std::size_t semicolon = std::min(ahead.find_first_of(";=\"<\r\n"), ahead.size() - 1);
            list = list || (!cookies && ahead.size() > 0 && ahead[semicolon] == ';' &&
                            isofname(character(after(blanks, value + semicolon + 1))));
            std::size_t end = endofvalue(value, list, encoded, cookies);
            const std::string word = lowercase(text.substr(value, end - value));
            if (contains(schemes, word)) {
                end = word == "digest" ? endofline(end) : endofvalue(after(blanks, end), list, encoded);
            }
            hide(value, end);
        }
    }

    // At an "@": hides the password in "//user:password@server", where it may contain "/" and "@", and in
    // "user:password@server:port". Without a port, the latter could be any e-mail address.
    void address() {
        constexpr std::string_view ends = " \t\r\n\"'<>,;(";
        const std::size_t limit = std::max(done, at - std::min<std::size_t>(at, 256));
        std::string_view user = text.substr(limit, at - limit);
        user.remove_prefix(user.find_last_of(ends) + 1);  // 0 if there is none
        const std::size_t slashes = user.find("//");
        user.remove_prefix(slashes == std::string_view::npos ? 0 : slashes + 2);
        const std::size_t separator = user.find_first_of(":/[");
        if (separator == std::string_view::npos || user[separator] != ':') {
            return;
        }
        const std::string_view rest = text.substr(at, 256);
        const std::size_t end = at + rest.substr(0, rest.find_first_of(" \t\r\n\"'<>,;(/?#")).rfind('@');
        const std::size_t colon = at - user.size() + separator;
        const std::size_t server = endofname(end + 1);
        const bool port = character(server) == ':' && isdigit(character(server + 1));
        const bool path = character(after("0123456789", colon + 1)) == '/';  // "//server:8080/path@"
        if (!path && (slashes != std::string_view::npos || port)) {
            hide(colon + 1, end);
        }
    }

    // The word in front of the name belongs to it in "session id", but is not one itself in "token for server".
    bool issecret(std::size_t begin, std::size_t end) const {
        std::vector<std::string> words = wordsof(text.substr(begin, end - begin));
        std::size_t from = 0;
        if (previousend > previous && previousend + 1 == begin && text[previousend] == ' ') {
            const std::vector<std::string> front = wordsof(text.substr(previous, previousend - previous));
            words.insert(words.begin(), front.empty() ? std::string() : front.back());
            from = 1;
        }
        return namesasecret(words, from);
    }

    void name(std::size_t begin, std::size_t end) {
        const std::string_view whole = text.substr(begin, end - begin);
        if (istoken(whole)) {
            hide(begin, after("+/=~", end));
            return;
        }
        std::size_t close = after("\\\"']", end);
        close += follows(close, "%22") ? 3 : 0;
        const std::size_t separator = after(blanks, close);
        const char sign = character(separator);
        const bool encoded = follows(separator, "%3d") || follows(separator, "%3a");
        if (encoded || sign == '=' || (sign == ':' && character(separator + 1) != ':')) {
            assigned(begin, end, encoded ? separator + 3 : after(blanks, after("=:>", separator)), encoded);
        } else if (sign == '(') {
            called(whole, begin, end);
        } else if (sign == '>' && begin > 0 && text[begin - 1] == '<') {
            if (issecret(begin, end)) {
                hide(end + 1, std::min(text.find('<', end), text.size()));
            }
        } else if (separator > close && (begin == 0 || text[begin - 1] != '/')) {
            mentioned(whole, begin, end, separator);
        }
    }

    // name=value, name: value
    void assigned(std::size_t begin, std::size_t end, std::size_t value, bool encoded) {
        const std::string whole = lowercase(text.substr(begin, end - begin));
        const std::size_t before = begin == 0 ? std::string_view::npos : text.find_last_not_of(blanks, begin - 1);
        const char sign = before == std::string_view::npos ? ';' : text[before];
        // Of key="Password" value="...", the second is the secret.
        const std::size_t content = after(" \t\"'\\", value);
        const std::size_t contentend = endofname(content);
        if ((whole == "key" || whole == "name") && follows(after(" \t\"',;\\", contentend), "value")) {
            valueissecret = ::orvdiag::namesasecret(text.substr(content, contentend - content));
        } else if (issecret(begin, end) || (whole == "value" && valueissecret) ||
                   ((sign == '?' || sign == '&') && contains(queryonly, whole))) {
            // Values of a list may contain blanks; so may a whole string that consists of one pair.
            const bool pair = text.substr(end, value - end).find('=') != std::string_view::npos;
            const bool list =
                pair && sign == ';' &&
                (before != std::string_view::npos || text.find_first_of("=:;", value) == std::string_view::npos);
            hidevalue(value, list, encoded, whole.find("cookie") != std::string::npos);
            valueissecret = false;
        }
    }

    // name(arguments)=result
    void called(std::string_view whole, std::size_t begin, std::size_t end) {
        const bool secret = issecret(begin, end);
        if (!secret && !contains(logincalls, lowercase(whole))) {
            return;
        }
        std::string_view call = text.substr(end, 4096);
        call = call.substr(0, call.find_first_of("\r\n"));
        std::size_t close = call.find(")=");
        if (secret && close != std::string_view::npos) {
            callresult = end + close + 2;
        }
        close = close != std::string_view::npos ? close : call.back() == ')' ? call.size() - 1 : call.find(')');
        call = call.substr(0, close);
        if (const std::size_t comma = call.find(','); !secret && comma != std::string_view::npos) {
            hide(after(blanks, end + comma + 1), end + call.size());
        } else if (secret && wordsof(whole).front() != "get") {
            hide(end + 1, end + call.size());
        }
    }

    // "PIN is 1234", "token 'abc'", "Bearer abc", "--password abc". Words without a digit are hidden only where they
    // must be the secret, because "password expired" is no secret.
    void mentioned(std::string_view whole, std::size_t begin, std::size_t end, std::size_t value) {
        if (follows(value, "is ") || follows(value, "was ")) {
            value = after(blanks, text.find(' ', value));
        }
        const std::string_view word = text.substr(value, endofvalue(value, false) - value);
        const bool option = whole[0] == '-' && character(value) != '-';
        const bool bearer = lowercase(whole) == "bearer" && !::orvdiag::namesasecret(word);
        if ((option || bearer || character(value) == '"' || character(value) == '\'' ||
             std::any_of(word.begin(), word.end(), isdigit)) &&
            issecret(begin, end)) {
            hidevalue(value, false, false, false);
        }
    }

    const std::string_view text;
    std::string copied;
    std::size_t done = 0;  // everything in front of it is copied
    std::size_t at = 0;
    std::size_t callresult = std::string_view::npos;  // where the secret result of a call begins
    std::size_t previous = 0, previousend = 0;        // the name before
    bool valueissecret = false;
};

}  // namespace

bool namesasecret(std::string_view path) {
    for (std::size_t end; !path.empty(); path.remove_prefix(std::min(end + 1, path.size()))) {
        end = std::min(path.find('\\'), path.size());
        if (namesasecret(wordsof(path.substr(0, end)), 0)) {
            return true;
        }
    }
    return false;
}

std::string withoutsecrets(std::string_view text) {
    return masking(text).result();
}

}  // namespace orvdiag
