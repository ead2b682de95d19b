#pragma once

/// @file
/// Failures that the login manager does not report itself.

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

/// A failure that is not the login manager's own report: an exception of the managed runtime that passed through a
/// member untranslated, or a runtime that could not be started.
///
/// Thrown by value; catch it as `const loginRuntimeException&` or as `const std::exception&`.
class loginRuntimeException : public std::exception {
public:
    /// Used by the library only. `textIn` is what `what()` returns, in UTF-8.
    loginRuntimeException(std::wstring typeNameIn, std::wstring messageIn, std::int32_t hresultIn, std::string textIn)
        : typeName(std::move(typeNameIn)), message(std::move(messageIn)), hresult(hresultIn), text(std::move(textIn)) {}

    /// Type and message in UTF-8: "System.IO.FileNotFoundException: Could not load ...", followed by the causes that
    /// the exception wraps, each as " ---> Type: message". Zero code units and lone surrogates become U+FFFD. If there
    /// is no managed exception, for example because the runtime could not be started, the message alone, with the
    /// HRESULT in it.
    const char* what() const noexcept override { return text.c_str(); }

    std::wstring typeName;  ///< full name of the managed type; empty if the failure is not a managed exception
    std::wstring message;   ///< the managed exception's message and causes, in the runtime's language
    std::int32_t hresult;   ///< the exception's HRESULT, or the one with which starting the runtime failed

private:
    std::string text;
};
