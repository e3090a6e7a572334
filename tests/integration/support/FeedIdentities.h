// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

namespace spotwell
{

// Who vouches for the POTA service on a private network, and certificates for the public loopbackKey: the
// service's own and some that must not be taken for it. Made for the tests and of no use elsewhere: the
// authorities' keys are gone. Valid from 2000 to 2199 if nothing else is said.

inline constexpr char authorityCertificate[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBfjCCASSgAwIBAgIUJfgcaOgts7c4wgEVIW2j6nNXKWUwCgYIKoZIzj0EAwIw\n"
    "HDEaMBgGA1UEAwwRVGVzdHMgb2Ygc3BvdHdlbGwwIBcNMDAwMTAxMDAwMDAwWhgP\n"
    "MjE5OTEyMzEyMzU5NTlaMBwxGjAYBgNVBAMMEVRlc3RzIG9mIHNwb3R3ZWxsMFkw\n"
    "EwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAELuSr987NC/tZEm7dQcFm8sYErnzpC77u\n"
    "W7SmX0E5Q2E+wtdL/yb1d8ms4aXa8/w40c5CgtcSM5DxHUG2bh2waKNCMEAwDwYD\n"
    "VR0TAQH/BAUwAwEB/zAOBgNVHQ8BAf8EBAMCAgQwHQYDVR0OBBYEFMHLG9Nqa9x3\n"
    "4GzTtw3ZEP8SvPXkMAoGCCqGSM49BAMCA0gAMEUCIQDTVOPw7606+WXuvOAaS3Sg\n"
    "DO4SZo1pTPy200OK2evlvwIgJ8S9Irr4ZwUi4CZQ10xz7zy8w7Qcakf+9J1MCVDh\n"
    "2f8=\n"
    "-----END CERTIFICATE-----\n";
/// The name under which a directory of certificates has it: what X509_NAME_hash(3) makes of its subject, and
/// ".0".
inline constexpr char authorityFileName[] = "a725f7c9.0";

/// For api.pota.app, signed by that authority.
inline constexpr char potaCertificate[] = "-----BEGIN CERTIFICATE-----\n"
                                          "MIIBoTCCAUagAwIBAgIUKyyYw5wmcSmVxH3lNnvlxW3j5IQwCgYIKoZIzj0EAwIw\n"
                                          "HDEaMBgGA1UEAwwRVGVzdHMgb2Ygc3BvdHdlbGwwIBcNMDAwMTAxMDAwMDAwWhgP\n"
                                          "MjE5OTEyMzEyMzU5NTlaMBcxFTATBgNVBAMMDGFwaS5wb3RhLmFwcDBZMBMGByqG\n"
                                          "SM49AgEGCCqGSM49AwEHA0IABIk7CShMyNq0JSHngd95z9WQDO2v6JXzFcqrBDox\n"
                                          "leVegQeL6gYlr85KyiEq7QZTVA4tvB+5oqAggP239mX2bXWjaTBnMAwGA1UdEwEB\n"
                                          "/wQCMAAwFwYDVR0RBBAwDoIMYXBpLnBvdGEuYXBwMB0GA1UdDgQWBBSQMtXevZSD\n"
                                          "36196wjsxMlcP3toKTAfBgNVHSMEGDAWgBTByxvTamvcd+Bs07cN2RD/Erz15DAK\n"
                                          "BggqhkjOPQQDAgNJADBGAiEA/dw/9VYfgN2t9N4ZfLyXvGd1QEMaKban+i7+SwRD\n"
                                          "7owCIQDC6bamJsbGZnpmvsbHCQkaph0pkAt/OX7MaXqerknfTw==\n"
                                          "-----END CERTIFICATE-----\n";

/// The same, by an authority that nobody knows.
inline constexpr char unknownCertificate[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBpTCCAUugAwIBAgIUBiH3NU/VBwqoaIb+lMZnxmAaXQgwCgYIKoZIzj0EAwIw\n"
    "ITEfMB0GA1UEAwwWTm9ib2R5IHRoYXQgdGVzdHMga25vdzAgFw0wMDAxMDEwMDAw\n"
    "MDBaGA8yMTk5MTIzMTIzNTk1OVowFzEVMBMGA1UEAwwMYXBpLnBvdGEuYXBwMFkw\n"
    "EwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAEiTsJKEzI2rQlIeeB33nP1ZAM7a/olfMV\n"
    "yqsEOjGV5V6BB4vqBiWvzkrKISrtBlNUDi28H7mioCCA/bf2ZfZtdaNpMGcwDAYD\n"
    "VR0TAQH/BAIwADAXBgNVHREEEDAOggxhcGkucG90YS5hcHAwHQYDVR0OBBYEFJAy\n"
    "1d69lIPfrX3rCOzEyVw/e2gpMB8GA1UdIwQYMBaAFMYYfUNqW15Dgq9Ts73UTJqq\n"
    "4sPiMAoGCCqGSM49BAMCA0gAMEUCIEpjrqZE2jOodCP3iqi9IU27Cew9SSrr4MmD\n"
    "zHJO3kfJAiEAmw03nKE/HcVoAOUMqb2aeIf83Sbg8xjUDS1qW2x/W/k=\n"
    "-----END CERTIFICATE-----\n";

/// For api.pota.app, signed by itself.
inline constexpr char selfSignedCertificate[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBZjCCAQ2gAwIBAgIBBzAKBggqhkjOPQQDAjAXMRUwEwYDVQQDDAxhcGkucG90\n"
    "YS5hcHAwIBcNMDAwMTAxMDAwMDAwWhgPMjE5OTEyMzEyMzU5NTlaMBcxFTATBgNV\n"
    "BAMMDGFwaS5wb3RhLmFwcDBZMBMGByqGSM49AgEGCCqGSM49AwEHA0IABIk7CShM\n"
    "yNq0JSHngd95z9WQDO2v6JXzFcqrBDoxleVegQeL6gYlr85KyiEq7QZTVA4tvB+5\n"
    "oqAggP239mX2bXWjSDBGMAwGA1UdEwEB/wQCMAAwFwYDVR0RBBAwDoIMYXBpLnBv\n"
    "dGEuYXBwMB0GA1UdDgQWBBSQMtXevZSD36196wjsxMlcP3toKTAKBggqhkjOPQQD\n"
    "AgNHADBEAiBfddNlkOFYxqxLxqrmMU1ZiQR1b16v9S2QVrfWZ5TqwgIgWOORZ4Gs\n"
    "cGsdPfzdTVD1ESJnB9mLHqcl3AeubqHQc4E=\n"
    "-----END CERTIFICATE-----\n";

/// By the known authority, but for www.dxsummit.fi.
inline constexpr char strangersCertificate[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBpzCCAUygAwIBAgIUDaV15xRMsvUvT1lOPGY37P6t2FowCgYIKoZIzj0EAwIw\n"
    "HDEaMBgGA1UEAwwRVGVzdHMgb2Ygc3BvdHdlbGwwIBcNMDAwMTAxMDAwMDAwWhgP\n"
    "MjE5OTEyMzEyMzU5NTlaMBoxGDAWBgNVBAMMD3d3dy5keHN1bW1pdC5maTBZMBMG\n"
    "ByqGSM49AgEGCCqGSM49AwEHA0IABIk7CShMyNq0JSHngd95z9WQDO2v6JXzFcqr\n"
    "BDoxleVegQeL6gYlr85KyiEq7QZTVA4tvB+5oqAggP239mX2bXWjbDBqMAwGA1Ud\n"
    "EwEB/wQCMAAwGgYDVR0RBBMwEYIPd3d3LmR4c3VtbWl0LmZpMB0GA1UdDgQWBBSQ\n"
    "MtXevZSD36196wjsxMlcP3toKTAfBgNVHSMEGDAWgBTByxvTamvcd+Bs07cN2RD/\n"
    "Erz15DAKBggqhkjOPQQDAgNJADBGAiEAo90ejkxr/CUCZF1g01kzhgEeFLHnqQau\n"
    "QcdPc3rH0HYCIQDD7wz3TtMvPKVXmMzhWJSyS1cQG3RyG2Z4iDXwhnyf1A==\n"
    "-----END CERTIFICATE-----\n";

/// For api.pota.app, by the known authority, valid until 2001.
inline constexpr char expiredCertificate[] =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBnjCCAUSgAwIBAgIUHJKmF+uloeNJcVCqkZ4ucObvdeMwCgYIKoZIzj0EAwIw\n"
    "HDEaMBgGA1UEAwwRVGVzdHMgb2Ygc3BvdHdlbGwwHhcNMDAwMTAxMDAwMDAwWhcN\n"
    "MDEwMTAxMDAwMDAwWjAXMRUwEwYDVQQDDAxhcGkucG90YS5hcHAwWTATBgcqhkjO\n"
    "PQIBBggqhkjOPQMBBwNCAASJOwkoTMjatCUh54Hfec/VkAztr+iV8xXKqwQ6MZXl\n"
    "XoEHi+oGJa/OSsohKu0GU1QOLbwfuaKgIID9t/Zl9m11o2kwZzAMBgNVHRMBAf8E\n"
    "AjAAMBcGA1UdEQQQMA6CDGFwaS5wb3RhLmFwcDAdBgNVHQ4EFgQUkDLV3r2Ug9+t\n"
    "fesI7MTJXD97aCkwHwYDVR0jBBgwFoAUwcsb02pr3HfgbNO3DdkQ/xK89eQwCgYI\n"
    "KoZIzj0EAwIDSAAwRQIgbxG4iFOmj+YljcSM1CWSYRq3mKAHSyjeAPu9N4Fz7+AC\n"
    "IQD2LLplSZT0IO13JGNBI5TtCsZW5wIPKV5JSE8okeppPg==\n"
    "-----END CERTIFICATE-----\n";

} // namespace spotwell
