// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// What LeakSanitizer leaves out, in every test program: where two threads need OpenSSL for the first time at
// once, a test's server and its client say, OpenSSL 3.0 now and then makes some of its tables twice and loses
// one of them.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libcrypto.so\n";
}
