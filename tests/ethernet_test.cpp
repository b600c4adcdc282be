#include <devfacts/ethernet.h>

#include "support/test.h"

using namespace test;

TEST(ethernet, words_of_any_size) {
  std::string seen;
  for (const int size : {7, 5, 4, 3, 1, 0, -1})
    for (const uint8_t value : {0, 1, 2, 255})
      for (const auto word : {eth_duplex2str, eth_link2str}) {
        char room[] = "???????";
        eth_status status{};
        status.link = status.duplex = value;
        EXPECT_EQ(word(&status, room, size), value > 1 || size < 1 ? nullptr : room);
        seen += shown(room, 7) + "\n";
      }
  EXPECT_EQ(seen, data("words"));
}
