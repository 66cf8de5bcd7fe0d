/// The C++ names of the type library: the process's type factory, the lock of the parser, and the
/// way from an internal type or value to its flat handle.
///
/// A vrntType_t* is the address of a Type, and a vrntValue_t* the address of a value's block, so
/// that a host can pass a handle where a `const Type&` is asked for:
///
///     vrntType_t* copy = allocateType(*reinterpret_cast<const Type*>(handle));
///
/// Types and values are read through the flat functions of vornath_data/vrnt.h.
#ifndef VORNATH_DATA_TYPE_LIBRARY_HPP
#define VORNATH_DATA_TYPE_LIBRARY_HPP

#include <cstdint>
#include <memory>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace boost {
class mutex;
}

namespace qex::vornath {

class DynamicValue;

/// An interned type: immutable, one object for each distinct description. The library makes and
/// destroys all of them. Its description is part of the library's internals.
class Type {
 public:
  class Factory;

  // The alternatives of a description and their parts, defined by the internals.
  enum class TBasetype : std::int32_t;
  struct Field;
  struct TStruct;
  struct Constructor;
  struct TEnum;
  template <typename D>
  struct TArrayND;
  struct TRef;
  struct TFun;

  Type(const Type&) = delete;
  Type& operator=(const Type&) = delete;

  /// Returns the process's one pointer to its type factory. With `create`, makes the factory if
  /// there is none. Without, the pointer may be empty: before the first use of a type, and again
  /// once the library's static destructors have run. The reference is valid until the library is
  /// unloaded and also sees a factory that is made later.
  /// Errors: std::bad_alloc with `create`.
  /// Threads: any. A read of the pointer races with the first use of a type, which writes it; call
  /// with `create` to avoid that.
  VRNT_API static const std::shared_ptr<Factory>& get_factory(bool create);

 protected:
  Type() = default;
  ~Type() = default;
};

/// Returns a flat handle on the type, with a new reference; release it with vrntTypeDestroy().
/// Threads: any.
VRNT_API vrntType_t* allocateType(const Type& type);

/// Returns a flat handle on the value's block, with a new reference; release it with
/// vrntValueDestroy().
VRNT_API vrntValue_t* allocateValue(const DynamicValue& value);

/// Held during each parse in the process. Not recursive: a parse on the thread that holds it blocks
/// forever. Include <boost/thread/mutex.hpp> to lock it.
extern VRNT_API boost::mutex parser_mutex;

}  // namespace qex::vornath

#endif
