#include <devfacts/core.h>
#include <devfacts/net.h>
#include <devfacts/product.h>

int main() {
  xml_str_item("product", product_name());
  for (list_link *link = ifi_get_all()->next; link != &interfaces; link = link->next)
    xml_str_item("name", reinterpret_cast<ifi_entry *>(link)->name);
}
