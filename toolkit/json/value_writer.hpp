// Writes groups and values as JSON.
#ifndef VORNATH_TOOLKIT_JSON_VALUE_WRITER_HPP
#define VORNATH_TOOLKIT_JSON_VALUE_WRITER_HPP

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "json/output.hpp"
#include "json/type_tree.hpp"
#include "vornath_data/values.h"

namespace vrtk {

/// Writes one part of a block that holds no references: `node` of the tree, whose struct or array
/// starts at `base`. `depth` is that of the line that the text starts on. If `defaults` is not
/// null, fields of structs whose bytes are the same there are left out.
void writePart(Output& out, const TypeTree& tree, std::uint32_t node, const char* base,
               const char* defaults, std::size_t depth);

/// Returns whether two places have the same content, without looking at padding.
bool sameContent(const TypeTree& tree, std::uint32_t node, const char* a, const char* b);

/// Writes values, of any depth without recursion.
class ValueWriter {
 public:
  explicit ValueWriter(Output& out) : out_(out) {}

  /// Writes `{ "type": ..., "data": ... }`, or null for null. Throws Failure with VRTK_VALUE_CYCLE
  /// if the references form a cycle; the class and the index say whose value it is.
  void write(const vrntValue_t* value, std::size_t depth, std::uint32_t objectClass,
             std::int32_t index);

 private:
  // A struct, an array or a referred block that is being written.
  struct Frame {
    std::shared_ptr<const TypeTree> tree;
    std::uint32_t node;   // the part that the frame is for
    std::uint32_t next;   // of a struct: the next field
    std::uint64_t index;  // how many parts were written
    const char* base;     // where the offsets of the parts count from
    const char* block;    // of a reference: what it leads to, if it is in blocks_
    std::size_t depth;
    bool oneLine;
    enum class Kind : std::uint8_t { Struct, Array, Reference, Function } kind;
  };

  // A block that something else refers to, too.
  struct Block {
    std::uint64_t words = 0;  // that lead to it
    std::uint64_t name = 0;   // 0 before it was met
    bool isOpen = false;
  };

  void countWords(const vrntValue_t* value);
  void run(const std::shared_ptr<const TypeTree>& tree, const char* data, std::size_t depth);
  void part(const std::shared_ptr<const TypeTree>& tree, std::uint32_t node, const char* base,
            std::size_t depth);
  void reference(std::uint64_t word, const vrntType_t* declared, std::size_t depth);
  void open(Frame frame);
  void step();

  Output& out_;
  TypeTrees trees_;
  std::unordered_map<const char*, Block> blocks_;
  std::uint64_t names_ = 0;
  std::vector<Frame> frames_;
  std::uint32_t objectClass_ = 0;
  std::int32_t index_ = 0;
};

}  // namespace vrtk

#endif
