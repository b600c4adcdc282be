/* Another netlink library's names, as a program may have them beside ours: none of our own calls may end here. */
#include <stdlib.h>

#define DECOY(name)       \
  extern void name(void); \
  void name(void) { abort(); }

/* clang-format off */
DECOY(nl_open) DECOY(nl_dump) DECOY(nl_send) DECOY(nl_recv) DECOY(nl_close) DECOY(nl_collect_interface)
DECOY(nla_data) DECOY(nla_memcpy) DECOY(nla_memdup) DECOY(nla_strdup) DECOY(nla_get_u32) DECOY(trimr_string)
