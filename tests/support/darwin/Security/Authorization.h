#pragma once

#include <cstdint>
#include <cstdio>

using OSStatus = std::int32_t;
using AuthorizationFlags = std::uint32_t;
using AuthorizationRef = const struct AuthorizationOpaqueRef*;
struct AuthorizationItemSet;
using AuthorizationRights = AuthorizationItemSet;
using AuthorizationEnvironment = AuthorizationItemSet;

#define kAuthorizationEmptyEnvironment nullptr

enum : AuthorizationFlags { kAuthorizationFlagDefaults = 0 };
enum : OSStatus {
    errAuthorizationSuccess = 0,
    errAuthorizationCanceled = -60006,
};

extern "C" {
OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* authorization);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
}
