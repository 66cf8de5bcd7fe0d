/// The counted pointer to an interned type.
#ifndef VORNATH_TYPES_TYPE_POINTER_HPP
#define VORNATH_TYPES_TYPE_POINTER_HPP

#include <boost/smart_ptr/intrusive_ptr.hpp>

namespace qex::vornath {

class InternedType;

/// A counted pointer to an interned type.
using TypePtr = boost::intrusive_ptr<const InternedType>;

/// Adds a reference: one atomic increment, no lock.
void intrusive_ptr_add_ref(const InternedType* type) noexcept;

/// Releases a reference: one atomic decrement. The last release takes the factory's lock and
/// destroys the type.
void intrusive_ptr_release(const InternedType* type) noexcept;

}  // namespace qex::vornath

#endif
