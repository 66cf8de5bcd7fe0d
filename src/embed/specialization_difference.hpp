/// Comparisons of values and types up to what specialization takes away.
#ifndef VORNATH_EMBED_SPECIALIZATION_DIFFERENCE_HPP
#define VORNATH_EMBED_SPECIALIZATION_DIFFERENCE_HPP

#include "types/type.hpp"
#include "values/views.hpp"

namespace qex::vornath {

/// Whether two values, both relating to the type, differ in a part that specialization keeps; NaN
/// differs from itself, as in valuesEqual(). Unlike in
/// buildSpecialization(), the key on the type of the whole means that they do not. Arrays of
/// different extents differ. Throws as buildSpecialization() does.
bool specializationDiffers(const ConstView& a, const ConstView& b, const InternedType& annotated);

/// What the type `full` has beyond `specialized`: the fields that are missing there, with their
/// types as they are, and those of which a part is missing, with that part. Nothing missing gives
/// the empty struct type. Throws "Incompatible type for specialization: {}" with the reason if
/// `specialized` has what `full` doesn't have.
TypePtr specializationRemainder(const InternedType& full, const InternedType& specialized);

}  // namespace qex::vornath

#endif
