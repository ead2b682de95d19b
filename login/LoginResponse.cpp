#include "login/LoginResponse.h"

// Not in the header, because the library exports them.
LoginResponse::LoginResponse() = default;
LoginResponse::LoginResponse(const LoginResponse&) = default;
LoginResponse::LoginResponse(LoginResponse&&) noexcept = default;
LoginResponse& LoginResponse::operator=(const LoginResponse&) = default;
LoginResponse& LoginResponse::operator=(LoginResponse&&) noexcept = default;
LoginResponse::~LoginResponse() = default;
