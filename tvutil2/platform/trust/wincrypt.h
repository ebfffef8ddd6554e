// The message inside a signed file, its signer and its certificates. What is in them is what the
// file says: whether that is true, WinVerifyTrust tells.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/trust/trust_errors.h"

using HCERTSTORE = struct HCERTSTORE__*;
using HCRYPTMSG = struct HCRYPTMSG__*;

inline constexpr DWORD X509_ASN_ENCODING = 0x00000001;
inline constexpr DWORD PKCS_7_ASN_ENCODING = 0x00010000;
inline constexpr DWORD CERT_QUERY_OBJECT_FILE = 1;
inline constexpr DWORD CERT_QUERY_CONTENT_PKCS7_SIGNED_EMBED = 10;
inline constexpr DWORD CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED_EMBED = 1 << 10;
inline constexpr DWORD CERT_QUERY_FORMAT_BINARY = 1;
inline constexpr DWORD CERT_QUERY_FORMAT_FLAG_BINARY = 1 << 1;
inline constexpr DWORD CMSG_SIGNER_INFO_PARAM = 6;
inline constexpr DWORD CERT_FIND_SUBJECT_CERT = 11 << 16;
inline constexpr DWORD CERT_NAME_SIMPLE_DISPLAY_TYPE = 4;

struct CRYPT_DATA_BLOB {
    DWORD cbData;
    BYTE* pbData;
};
using CRYPT_INTEGER_BLOB = CRYPT_DATA_BLOB;  ///< lowest byte first
using CERT_NAME_BLOB = CRYPT_DATA_BLOB;      ///< encoded

/// Which certificate a signer signed with. The blobs stand behind it in its buffer.
struct CMSG_SIGNER_INFO {
    DWORD dwVersion;
    CERT_NAME_BLOB Issuer;
    CRYPT_INTEGER_BLOB SerialNumber;
};

/// What certificates are looked for by.
struct CERT_INFO {
    DWORD dwVersion;
    CRYPT_INTEGER_BLOB SerialNumber;
    CERT_NAME_BLOB Issuer;
};

struct CERT_CONTEXT {
    DWORD dwCertEncodingType;
    BYTE* pbCertEncoded;
    DWORD cbCertEncoded;
};

/// Opens the message that a file (CERT_QUERY_OBJECT_FILE: `object` is its path) carries embedded.
/// Any of the results may be null. FALSE with CRYPT_E_NO_MATCH for a file without a well-formed
/// one, or when other contents and formats than these are expected; ERROR_FILE_NOT_FOUND and its
/// kin; ERROR_INVALID_PARAMETER for another object. Safe from any thread, as all functions here.
TVUTIL_API BOOL CryptQueryObject(DWORD object_type, const void* object, DWORD content_types,
                                 DWORD format_types, DWORD flags, DWORD* encoding, DWORD* content,
                                 DWORD* format, HCERTSTORE* store, HCRYPTMSG* message,
                                 const void** context);

/// CMSG_SIGNER_INFO_PARAM of the signer number 0: into `data` (null asks for the size), which has
/// room for `*size` bytes; the bytes that it takes go to `size`. FALSE with ERROR_MORE_DATA when
/// they don't suffice, ERROR_INVALID_HANDLE, or ERROR_INVALID_PARAMETER for any other parameter or
/// signer.
TVUTIL_API BOOL CryptMsgGetParam(HCRYPTMSG message, DWORD parameter, DWORD index, void* data,
                                 DWORD* size);
TVUTIL_API BOOL CryptMsgClose(HCRYPTMSG message);

/// CERT_FIND_SUBJECT_CERT: the store's certificate with the issuer and number in the CERT_INFO
/// `parameter` points to, or the next one behind `previous`, which is freed. Null with
/// CRYPT_E_NOT_FOUND, ERROR_INVALID_HANDLE or ERROR_INVALID_PARAMETER.
TVUTIL_API const CERT_CONTEXT* CertFindCertificateInStore(HCERTSTORE store, DWORD encoding,
                                                          DWORD flags, DWORD type,
                                                          const void* parameter,
                                                          const CERT_CONTEXT* previous);
/// Each certificate that was found is freed once. Null is nothing to do.
TVUTIL_API BOOL CertFreeCertificateContext(const CERT_CONTEXT* certificate);
TVUTIL_API BOOL CertCloseStore(HCERTSTORE store, DWORD flags);

/// CERT_NAME_SIMPLE_DISPLAY_TYPE: the subject's common name, else its unit, organisation or
/// address, into `text` of `size` units, cut if need be; the units copied or, for a null text,
/// needed, the zero counted. 1, and an empty text, when there is none of these.
TVUTIL_API DWORD CertGetNameStringW(const CERT_CONTEXT* certificate, DWORD type, DWORD flags,
                                    const void* parameter, char16_t* text, DWORD size);
