#pragma once

/// @file
/// Failures that the login manager reports, and their codes.

#include <exception>

/// The code of a failure that the login manager reports: the number of its `loginManagerStatusCode`, 0 to 8.
///
/// The deployed login manager defines what each number means. This library itself uses only two of them, 6 and 8.
enum statusCode : int {
    statusCode0 = 0,
    statusCode1 = 1,
    statusCode2 = 2,
    statusCode3 = 3,
    statusCode4 = 4,
    statusCode5 = 5,
    statusCode6 = 6,
    statusCode7 = 7,
    statusCode8 = 8,
    statusCodeNoResponse = statusCode6,  ///< also: the manager returned no record at all
    statusCodeOther = statusCode8,       ///< also: the manager reported a number outside 0 to 8
};

/// A failure that the login manager itself reported (a refused password, a server that does not answer, ...).
///
/// Thrown by pointer, as a heap object that the catcher deletes:
///
///     catch (loginManagerException* refused) { ... refused->code ...; delete refused; }
///
/// A `catch (const std::exception&)` does not see it; `catch (std::exception*)` does. `what()` is the standard
/// library's default text and says nothing: read `code`.
class loginManagerException : public std::exception {
public:
    /// Used by the library only.
    explicit loginManagerException(statusCode codeIn) : code(codeIn) {}

    statusCode code;  ///< what the manager reported
};
