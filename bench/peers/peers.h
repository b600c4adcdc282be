#pragma once

namespace bench {

// Opens a socket as the library does, sends the same two requests, and does no more with the answers than receive them.
void receive_only();

// The collection written with libmnl: the same records with the same fields, their owners found in a table by index.
void collect_with_libmnl();
void fill_with_libmnl();

// The link and address caches of libnl-route-3.
void collect_with_libnl();

// The C library's own list, which has no link types, parents, queue lengths or flags of links.
void collect_with_getifaddrs();

// The netstats document by an XML writer, and by a growing string with escaping.
void print_with_libxml2();
void print_with_glib();

}  // namespace bench
