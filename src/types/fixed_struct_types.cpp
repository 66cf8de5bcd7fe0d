#include "types/fixed_struct_types.hpp"

#include "types/make_type.hpp"
#include "types/metadata.hpp"

namespace qex::vornath {
namespace {

TypePtr makeFloatArray(std::optional<int> extent) {
  return makeType(Type::TArrayND<int>(makeType(Type::TBasetype::Float), extent));
}

TypePtr makeSpectrum() {
  std::vector<Type::Constructor> encodings;
  for (const char* name : {"LUMINANCE", "RGB", "SPECTRAL"}) encodings.push_back({name, {}, {}});
  std::vector<Type::Field> fields;
  fields.emplace_back(makeType(Type::TEnum(std::move(encodings))), "encoding");
  fields.emplace_back(makeType(Type::TRef{makeFloatArray(std::nullopt)}), "spectrum");
  Metadata metadata;
  setMetadata(metadata, "name", std::string("Spectrum"));
  return makeType(Type::TStruct(std::move(fields)), metadata);
}

}  // namespace

const InternedType& spectrumType() {
  static const InternedType& type = permanentType(makeSpectrum());
  return type;
}

TypePtr floatArrayType(std::int32_t extent) {
  static const InternedType& luminance = permanentType(makeFloatArray(1));
  static const InternedType& rgb = permanentType(makeFloatArray(3));
  static const InternedType& prepared166 = permanentType(makeFloatArray(166));
  switch (extent) {
    case 1:
      return TypePtr(&luminance);
    case 3:
      return TypePtr(&rgb);
    case 166:
      return TypePtr(&prepared166);
    default:
      return makeArrayType(*rgb.get<Type::TArrayND<int>>().element, extent);
  }
}

}  // namespace qex::vornath
