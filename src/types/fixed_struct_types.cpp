#include "fixed_struct_types.hpp"

#include "make_type.hpp"
#include "metadata.hpp"

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

const Type& spectrumType() {
  static const Type& type = permanentType(makeSpectrum());
  return type;
}

TypePtr floatArrayType(std::int32_t extent) {
  static const Type& luminance = permanentType(makeFloatArray(1));
  static const Type& rgb = permanentType(makeFloatArray(3));
  static const Type& prepared166 = permanentType(makeFloatArray(166));
  switch (extent) {
    case 1:
      return TypePtr(&luminance);
    case 3:
      return TypePtr(&rgb);
    case 166:
      return TypePtr(&prepared166);
    default:
      return makeFloatArray(extent);
  }
}

}  // namespace qex::vornath
