// The stations connected to a radio, and which of their strengths the driver's file has.
#pragma once

#include <devfacts/wireless.h>

#include "core/owner.h"

namespace devfacts::tool {

constexpr unsigned chain_count = 3;

class peer_table {
 public:
  // Reads the file of an interface; on failure errno has the reason.
  bool read(const char *name);

  size_t size() const { return list_.count; }
  const iw_peer_entry &row(size_t index) const { return list_.rows[index]; }
  bool has_strength(size_t index, unsigned chain) const;
  int32_t strength(size_t index, unsigned chain) const;

  peer_table() = default;
  peer_table(const peer_table &) = delete;
  peer_table &operator=(const peer_table &) = delete;
  ~peer_table() { iw_peers_free(&list_); }

 private:
  static int mark_line(void *context, char *key, char *value);

  iw_peers_list list_{};
  malloc_ptr<uint8_t> answers_;  // a bit for each chain of each row
  size_t marked_ = 0;
};

}  // namespace devfacts::tool
