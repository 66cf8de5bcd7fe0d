// Values in C++, and on several threads. docs/memory.md explains the parts.
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>
#include <vornath_data/value.hpp>

namespace {

int failures = 0;

void check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "wrong: %s\n", what);
  ++failures;
}

void copyAndWrite() {
  const vrnt::Value a = vrnt::Value::parse("{ width = 640; height = 480; }").value();
  vrnt::Value b = a;
  check(b.get() == a.get(), "a copy of a Value shares the block");

  const vrnt::View width = vrnt::View(&b).field("width");
  check(width.read<std::int32_t>() == 640 && b.get() == a.get(), "a read never copies");

  width.write(std::int32_t{320});
  check(b.get() != a.get(), "the write moved b to a copy of the block");
  check(width.read<std::int32_t>() == 320, "the view names b, and so finds the copy");
}

void writeOnThreads() {
  const vrnt::Value shared = vrnt::Value::parse("{ width = 640; height = 480; }").value();
  std::vector<std::thread> threads;
  for (std::int32_t i = 0; i < 4; ++i) {
    threads.emplace_back([own = shared, i]() mutable {
      vrnt::View(&own).field("width").write(i);  // copies: own shares its block with shared
    });
  }
  for (std::thread& thread : threads) thread.join();

  const auto width = vrnt::ConstView(&shared).field("width").read<std::int32_t>();
  check(width == 640, "no thread has changed the shared block");
}

}  // namespace

int main() {
  copyAndWrite();
  writeOnThreads();
  return failures == 0 ? 0 : 1;
}
