// The machine's full name for the SMTP greeting: the host name, made
// canonical through the resolver when it knows the name.
#pragma once

#include <string>

namespace brindle {

// gethostname, then the canonical name from getaddrinfo (AI_CANONNAME); the
// bare host name when the resolver has no better one; empty when even the
// host name is unavailable. Looked up once per process and remembered,
// because the lookup may block on the resolver.
std::string HostFullName();

// The lookup itself, without remembering.
std::string LookUpHostFullName();

// The name the SMTP greeting carries: EHLO needs a domain, so a full name
// without a dot gives way to `addressLiteral` ("[192.0.2.1]", "[IPv6:...]"),
// the local end of the server connection, when that is known.
std::string EhloName(const std::string& fullName, const std::string& addressLiteral);

}  // namespace brindle
