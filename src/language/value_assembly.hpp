/// The values of a text that are being built: each is a node with its place in the value around it,
/// and has no block of its own. The block is allocated for what stands by itself (a whole value,
/// what a reference leads to, an annotation), and its parts are written in place.
#ifndef VORNATH_LANGUAGE_VALUE_ASSEMBLY_HPP
#define VORNATH_LANGUAGE_VALUE_ASSEMBLY_HPP

#include <cstdint>
#include <string_view>
#include <vector>

#include "types/extents.hpp"
#include "types/type.hpp"
#include "values/block.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Time and memory are linear in the number of nodes, however deep they are nested. Functions throw
/// std::bad_alloc and what the construction of their type throws; after that the assembly may only
/// be destroyed.
class ValueAssembly {
 public:
  /// `lanes` are the bytes of scalars and short vectors and must outlive the assembly.
  explicit ValueAssembly(const char* lanes) : lanes_(lanes) {}

  /// Adds values of a base type that lie one after the other from lanes[offset].
  void addLanes(Type::TBasetype base, std::uint32_t count, std::uint64_t offset);
  /// Adds an enum value.
  void addEnumerator(const TypePtr& enumType, std::string_view constructor);
  /// Adds a foreign pointer of the type.
  void addForeign(const TypePtr& referenceType, std::uint64_t id);

  /// Replaces the last value by a reference to it.
  void refer();
  /// Labels the last value. The label must outlive the assembly.
  void label(std::string_view text) { labels_.push_back(text); }
  /// Replaces the last `count` values, each labelled, by a struct.
  void makeStruct(std::uint32_t count);
  /// Replaces what the last `count` functions added by an array of these values, of the element
  /// type, or of the first value's if that is null. Without extents there is one element for each
  /// value.
  void makeArray(std::uint32_t count, const Extents* extents, const TypePtr& element);

  /// Removes the last value and returns it.
  DynamicValue take();

 private:
  using Index = std::uint32_t;

  // A part that is written from lanes or from a word, or a struct or array that only places others.
  struct Node {
    enum Kind : std::uint8_t { Lanes, Word, Aggregate };

    Kind kind;
    std::uint32_t count = 1;        // values, one after the other
    Index first;                    // of the nodes within this one, which stand before it
    Index outer = 0;                // set once there is one
    std::uint64_t offset = 0;       // in the outer node
    std::uint64_t source = 0;       // of the lanes, or the word
    const InternedType* valueType;  // without annotations
    TypePtr owner{};                // of the type, unless it is a base type, which is permanent
    BlockPtr referee{};             // of a reference word
  };

  // The last nodes that have no outer one, as a list of parts.
  struct Parts;

  Index add(Node::Kind kind, const InternedType& type);
  Index addOwned(Node::Kind kind, const InternedType& type);
  void place(Index outer, std::size_t firstOpen);

  const char* const lanes_;
  std::vector<Node> nodes_;  // each behind those within it
  std::vector<Index> open_;  // those without an outer one
  std::vector<std::string_view> labels_;
};

}  // namespace qex::vornath

#endif
