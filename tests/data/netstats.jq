# The report without its counters, from what "ip -j addr" prints.
"<netstats>", (.[] |
  " <interface>",
  "  <name>\(.ifname | @html)</name>",
  "  <status>\(if .flags | index("UP") then "up" else "down" end)</status>",
  (if .link then "  <master>\(.link)</master>" else empty end),
  "  <hwaddr>\(.address | ascii_upcase)</hwaddr>",
  (.addr_info[] | (if .family == "inet" then "ipv4" else "ipv6" end) as $e | "  <\($e)>\(.local)</\($e)>"),
  " </interface>"), "</netstats>"
