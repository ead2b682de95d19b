#include "login/LoginResponse.h"

// Defined here, not in the header: the library exports them, so that a host links against one definition.
LoginResponse::LoginResponse() = default;
LoginResponse::LoginResponse(const LoginResponse&) = default;
LoginResponse::LoginResponse(LoginResponse&&) noexcept = default;
LoginResponse& LoginResponse::operator=(const LoginResponse&) = default;
LoginResponse& LoginResponse::operator=(LoginResponse&&) noexcept = default;
LoginResponse::~LoginResponse() = default;
