// Escaping a text for XML: into a buffer, against a copy of the text, and into a block of its own, against other
// libraries.
#include <benchmark/benchmark.h>
#include <devfacts/core.h>
#include <glib.h>
#include <libxml/entities.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// So many percent of the bytes, evenly distributed, need an entity, one that all of the libraries write.
std::string text_of(const benchmark::State &state) {
  std::string text(static_cast<size_t>(state.range(0)), 'a');
  for (size_t i = 0, entities = 0; i < text.size(); ++i) {
    if ((i + 1) * static_cast<size_t>(state.range(1)) / 100 > entities) text[i] = "<>&\""[entities++ % 4];
  }
  return text;
}

char *into_with_devfacts(const char *text, char *buffer) { return escape_xml(text, buffer); }
char *copy(const char *text, char *buffer) { return std::strcpy(buffer, text); }

char *with_devfacts(const char *text) { return escape_xml(text, nullptr); }
char *with_glib(const char *text) { return g_markup_escape_text(text, -1); }

char *with_libxml2(const char *text) {
  return reinterpret_cast<char *>(xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar *>(text)));
}

void escape_into(benchmark::State &state, char *(*escape)(const char *text, char *buffer)) {
  const std::string text = text_of(state);
  std::string buffer(6 * text.size() + 1, '\0');
  for (auto _ : state) benchmark::DoNotOptimize(escape(text.c_str(), buffer.data()));
}

void escape(benchmark::State &state, char *(*escape_text)(const char *text)) {
  const std::string text = text_of(state);
  for (auto _ : state) {
    char *escaped = escape_text(text.c_str());
    benchmark::DoNotOptimize(escaped);
    std::free(escaped);
  }
}

void sizes(benchmark::internal::Benchmark *family) { family->ArgsProduct({{32, 65536}, {0, 5, 100}}); }

}  // namespace

BENCHMARK_CAPTURE(escape_into, devfacts, into_with_devfacts)->Apply(sizes);
BENCHMARK_CAPTURE(escape_into, limit, copy)->Apply(sizes);
BENCHMARK_CAPTURE(escape, devfacts, with_devfacts)->Apply(sizes);
BENCHMARK_CAPTURE(escape, libxml2, with_libxml2)->Apply(sizes);
BENCHMARK_CAPTURE(escape, glib, with_glib)->Apply(sizes);
