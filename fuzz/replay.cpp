// Gives a target each of the files that are named: a main for compilers without a fuzzer of their own.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count);

int main(int count, char **paths) {
  for (int i = 1; i < count; ++i) {
    std::ifstream file(paths[i], std::ios::binary);
    const std::string input(std::istreambuf_iterator<char>(file), {});
    if (!file) return std::fprintf(stderr, "cannot read %s\n", paths[i]), 1;
    std::fprintf(stderr, "%s\n", paths[i]);
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
  }
  return count > 1 ? 0 : 1;
}
