#include "types/fixed_struct_types.hpp"

#include "types/metadata.hpp"
#include "types/type_factory.hpp"

namespace qex::vornath {
namespace {

// A static in a function that throws stays unmade, and the next call tries again.
const InternedType* permanent(const TypePtr& type) {
  return Type::get_factory(true)->makePermanent(type.get());
}

TypePtr makeFloatArray(std::optional<int> extent) {
  Type::Factory& factory = *Type::get_factory(true);
  return factory.makeType(Type::TArrayND<int>(factory.makeType(Type::TBasetype::Float), extent));
}

TypePtr makeSpectrum() {
  Type::Factory& factory = *Type::get_factory(true);
  std::vector<Type::Constructor> encodings;
  for (const char* name : {"LUMINANCE", "RGB", "SPECTRAL"}) encodings.push_back({name, {}, {}});
  std::vector<Type::Field> fields;
  fields.emplace_back(factory.makeType(Type::TEnum(std::move(encodings))), "encoding");
  fields.emplace_back(factory.makeType(Type::TRef{makeFloatArray(std::nullopt)}), "spectrum");
  Metadata metadata;
  setMetadata(metadata, "name", std::string("Spectrum"));
  return factory.makeType(Type::TStruct(std::move(fields)), metadata);
}

}  // namespace

const InternedType& spectrumType() {
  static const InternedType* const type = permanent(makeSpectrum());
  return *type;
}

TypePtr floatArrayType(std::int32_t extent) {
  static const InternedType* const luminance = permanent(makeFloatArray(1));
  static const InternedType* const rgb = permanent(makeFloatArray(3));
  static const InternedType* const prepared166 = permanent(makeFloatArray(166));
  switch (extent) {
    case 1:
      return TypePtr(luminance);
    case 3:
      return TypePtr(rgb);
    case 166:
      return TypePtr(prepared166);
    default:
      return makeFloatArray(extent);
  }
}

}  // namespace qex::vornath
