#pragma once
// Addresses of the server's files: a base address from the configuration joined with paths from the list.

#include <cstdint>
#include <string>
#include <string_view>

namespace nv::update {

// "http://" or "https://" (any case), a host, and no space or control character anywhere.
bool isHttpUrl(std::string_view url);

// A list path ("data/Harita 1/ğ.pak") made fit for an address: every byte other than an unreserved
// character (A-Z a-z 0-9 - . _ ~) and "/" as %XX, so spaces and UTF-8 letters reach the server as the
// operator's file names.
std::string percentEncodePath(std::string_view path);

// base (ending in "/") followed by the encoded path.
std::string fileUrl(std::string_view base, std::string_view path);

// ref as it is when it is an absolute http(s) address; one starting with "/" on base's host; any other
// relative to base (encoded as a path).
std::string resolveUrl(std::string_view base, std::string_view ref);

// The address with a query that no cache has seen ("?nvt=" or "&nvt=" and the token in hexadecimal), for the
// configuration and the list, which a CDN must not serve stale.
std::string cacheBusted(std::string_view url, uint64_t token);

} // namespace nv::update
