#pragma once

#include "platform/base/Handle.h"
#include "platform/base/Result.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/param_build.h>

#include <string>

namespace skyflare {

using BigNumber = Handle<BIGNUM, &BN_clear_free>;
using CurveGroup = Handle<EC_GROUP, &EC_GROUP_free>;
using CurvePoint = Handle<EC_POINT, &EC_POINT_free>;
using Key = Handle<EVP_PKEY, &EVP_PKEY_free>;
using KeyContext = Handle<EVP_PKEY_CTX, &EVP_PKEY_CTX_free>;
using Cipher = Handle<EVP_CIPHER_CTX, &EVP_CIPHER_CTX_free>;
using Derivation = Handle<EVP_KDF, &EVP_KDF_free>;
using DerivationContext = Handle<EVP_KDF_CTX, &EVP_KDF_CTX_free>;
using ParameterBuilder = Handle<OSSL_PARAM_BLD, &OSSL_PARAM_BLD_free>;
using Parameters = Handle<OSSL_PARAM, &OSSL_PARAM_free>;

/// What the library has noted about a failure is let go of: it would be taken for the next one's.
inline Error cryptographyError(std::string message)
{
    ERR_clear_error();
    return {"push", 0, std::move(message)};
}

} // namespace skyflare
