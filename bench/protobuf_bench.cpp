// Yardsticks of texts and values: protobuf does the same jobs with messages that it knows only at
// run time, made from a schema text with the same labels, defaults, limits and descriptions.
#include <benchmark/benchmark.h>
#include <google/protobuf/compiler/parser.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "schemas.hpp"

namespace {

namespace protobuf = google::protobuf;
using bench::Leaf;
using bench::Part;
using bench::Schema;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

// The annotations are one custom option with several fields, apart from the default, which protobuf
// has for single fields.
std::string options(const Leaf& leaf) {
  std::string text = "(ui) = { desc: " + quoted(leaf.description);
  if (!leaf.limits.empty()) text += " max: 1000.0 min: 0.0";
  text += " name: " + quoted(leaf.name);
  if (!leaf.more.empty()) text += " soft_max: 1.0";
  text += " }";
  if (leaf.kind != Leaf::Kind::Float3)
    return " [default = " + leaf.components[0] + ", " + text + "]";
  return " [" + text + "]";
}

std::string typeName(const Leaf& leaf) {
  switch (leaf.kind) {
    case Leaf::Kind::Float:
      return "optional float";
    case Leaf::Kind::Float3:
      return "repeated float";
    case Leaf::Kind::Int:
      return "optional int32";
    case Leaf::Kind::Bool:
      return "optional bool";
    case Leaf::Kind::Enum:
      return "optional Projection";
  }
  std::abort();
}

std::string messageText(const Part& part, const std::string& name, bool annotated) {
  std::string text = "message " + name + " { enum Projection {";
  int code = 0;
  for (const std::string& constructor : bench::kConstructors) {
    text += " " + constructor + " = " + std::to_string(code++) + ";";
  }
  text += " } ";
  int number = 0;
  for (const Leaf& leaf : part.leaves) {
    text += typeName(leaf) + " " + leaf.label + " = " + std::to_string(++number);
    if (annotated) {
      text += options(leaf);
    } else if (leaf.kind == Leaf::Kind::Float3) {
      text += " [packed = true]";
    }
    text += "; ";
  }
  return text + "}";
}

std::string schemaText(const Schema& schema, bool annotated) {
  const std::string syntax = "syntax = \"proto2\"; ";
  if (!schema.isNested()) return syntax + messageText(schema.parts[0], "Root", annotated);
  std::string text = syntax + "message Root { ";
  int number = 0;
  for (const Part& part : schema.parts) {
    const std::string name = "Part" + std::to_string(++number);
    text += messageText(part, name, annotated) + " optional " + name + " " + part.label + " = " +
            std::to_string(number) + "; ";
  }
  return text + "}";
}

bool parseSchema(const std::string& text, protobuf::FileDescriptorProto& file) {
  protobuf::io::ArrayInputStream input(text.data(), static_cast<int>(text.size()));
  protobuf::io::Tokenizer tokenizer(&input, nullptr);
  protobuf::compiler::Parser parser;
  return parser.Parse(&tokenizer, &file);
}

void parseType(benchmark::State& state, const Schema& schema) {
  const std::string text = schemaText(schema, true);
  for (auto _ : state) {
    protobuf::FileDescriptorProto file;
    if (!parseSchema(text, file)) state.SkipWithError("not parsed");
    benchmark::DoNotOptimize(&file);
  }
}

std::string partText(const Part& part) {
  std::string text;
  for (const Leaf& leaf : part.leaves) {
    text += leaf.label + ": ";
    const auto& c = leaf.components;
    text += leaf.kind == Leaf::Kind::Float3 ? "[" + c[0] + ", " + c[1] + ", " + c[2] + "]" : c[0];
    text += " ";
  }
  return text;
}

std::string messageValueText(const Schema& schema) {
  if (!schema.isNested()) return partText(schema.parts[0]);
  std::string text;
  for (const Part& part : schema.parts) text += part.label + " { " + partText(part) + "} ";
  return text;
}

// The message of a schema, with the values of its defaults.
class Sample {
 public:
  explicit Sample(const Schema& schema) : text_(messageValueText(schema)) {
    protobuf::FileDescriptorProto file;
    parseSchema(schemaText(schema, false), file);
    file.set_name("schema.proto");
    const protobuf::FileDescriptor* const built = pool_.BuildFile(file);
    prototype_ = factory_.GetPrototype(built->FindMessageTypeByName("Root"));
    message_.reset(prototype_->New());
    protobuf::TextFormat::ParseFromString(text_, message_.get());
  }

  const std::string& text() const { return text_; }
  protobuf::Message& message() { return *message_; }
  const protobuf::Message* prototype() const { return prototype_; }

 private:
  std::string text_;
  protobuf::DescriptorPool pool_;
  protobuf::DynamicMessageFactory factory_;
  const protobuf::Message* prototype_ = nullptr;
  std::unique_ptr<protobuf::Message> message_;
};

void parseValue(benchmark::State& state, const Schema& schema) {
  Sample sample(schema);
  for (auto _ : state) {
    if (!protobuf::TextFormat::ParseFromString(sample.text(), &sample.message())) {
      state.SkipWithError("not parsed");
    }
  }
}

void printValue(benchmark::State& state, const Schema& schema) {
  Sample sample(schema);
  for (auto _ : state) {
    std::string text;
    protobuf::TextFormat::PrintToString(sample.message(), &text);
    benchmark::DoNotOptimize(text.data());
  }
}

void readStream(benchmark::State& state, const Schema& schema) {
  Sample sample(schema);
  const std::string bytes = sample.message().SerializeAsString();
  for (auto _ : state) {
    const std::unique_ptr<protobuf::Message> message(sample.prototype()->New());
    if (!message->ParseFromString(bytes)) state.SkipWithError("not read");
  }
}

void createDefault(benchmark::State& state, const Schema& schema) {
  const Sample sample(schema);
  for (auto _ : state) {
    const std::unique_ptr<protobuf::Message> message(sample.prototype()->New());
    benchmark::DoNotOptimize(message.get());
  }
}

const int registered = [] {
  for (const Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
    const auto yardstick = [schema](const std::string& row, auto measure) {
      const std::string name = row + " " + schema->name + "/protobuf";
      benchmark::RegisterBenchmark(name.c_str(), measure, *schema);
    };
    yardstick("vrntTypeParse of a new type", parseType);
    yardstick("vrntValueParse of", parseValue);
    yardstick("vrntValueString of", printValue);
    yardstick("vrntValueDeserialize of", readStream);
    yardstick("vrntValueCreateDefault of", createDefault);
  }
  return 0;
}();

}  // namespace
