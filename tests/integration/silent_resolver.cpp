#include <netdb.h>
#include <unistd.h>

// A name server that stays silent, longer than any test.
extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**)
{
    while (true)
        ::pause();
}
