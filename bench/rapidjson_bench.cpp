// The yardstick of printed values: RapidJSON writes the same labels and numbers, from doubles that
// have as few digits as the library prints. An enum is a string with its type, as in the library's
// text.
#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "schemas.hpp"

namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void writeText(Writer& writer, const std::string& text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// A leaf with its numbers.
struct Entry {
  const bench::Leaf* leaf;
  std::vector<double> numbers;
  std::string text;
};

struct Group {
  const bench::Part* part;
  std::vector<Entry> entries;
};

std::vector<Group> numbersOf(const bench::Schema& schema) {
  std::vector<Group> groups;
  for (const bench::Part& part : schema.parts) {
    Group group{&part, {}};
    for (const bench::Leaf& leaf : part.leaves) {
      Entry entry{&leaf, {}, bench::defaultText(leaf)};
      for (const std::string& component : leaf.components) {
        entry.numbers.push_back(component == "true" ? 1 : std::strtod(component.c_str(), nullptr));
      }
      group.entries.push_back(std::move(entry));
    }
    groups.push_back(std::move(group));
  }
  return groups;
}

void writeEntry(Writer& writer, const Entry& entry) {
  writeText(writer, entry.leaf->label);
  switch (entry.leaf->kind) {
    case bench::Leaf::Kind::Float:
      writer.Double(entry.numbers[0]);
      break;
    case bench::Leaf::Kind::Float3:
      writer.StartArray();
      for (const double number : entry.numbers) writer.Double(number);
      writer.EndArray();
      break;
    case bench::Leaf::Kind::Int:
      writer.Int(static_cast<int>(entry.numbers[0]));
      break;
    case bench::Leaf::Kind::Bool:
      writer.Bool(entry.numbers[0] != 0);
      break;
    case bench::Leaf::Kind::Enum:
      writeText(writer, entry.leaf->components[0]);
      break;
  }
}

void writeAll(benchmark::State& state, const bench::Schema& schema) {
  const std::vector<Group> groups = numbersOf(schema);
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    for (const Group& group : groups) {
      if (schema.isNested()) {
        writeText(writer, group.part->label);
        writer.StartObject();
      }
      for (const Entry& entry : group.entries) writeEntry(writer, entry);
      if (schema.isNested()) writer.EndObject();
    }
    writer.EndObject();
    benchmark::DoNotOptimize(buffer.GetString());
  }
}

const int registered = [] {
  for (const bench::Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
    const std::string name = "vrntValueString of " + schema->name + "/RapidJSON";
    benchmark::RegisterBenchmark(name.c_str(), writeAll, *schema);
  }
  return 0;
}();

}  // namespace
