#include "colour/texture_types.hpp"

#include "colour/type_construction.hpp"

namespace qex::vornath {
namespace {

// In the order of TextureKind.
constexpr std::array kKinds{
    R"({ int @default=-1 @name="Spectrum texture" spectrum_texture; } @no_specialize)",
    R"({ int @default=-1 @name="Spectrum sphere texture" spectrum_sphere_texture; } @no_specialize)",
    R"({ int @default=-1 @name="Normal texture" normal_texture; } @no_specialize)",
    R"({ int @default=-1 @name="Float texture" float_texture; } @no_specialize)",
    R"({ int @default=-1 @name="Float sphere texture" float_sphere_texture; } @no_specialize)",
};

}  // namespace

const InternedType& textureReferenceType() {
  static const InternedType& type =
      permanentType(InternedType::parse(R"({ int @default=-1 @name="Texture" texture_ref; })"));
  return type;
}

const InternedType& textureReferenceType(TextureKind kind) {
  return ParsedTypes<kKinds>::at(static_cast<std::size_t>(kind));
}

const InternedType& uvTransformationType() {
  static const InternedType& type =
      permanentType(InternedType::parse("{ float2 x; float2 y; float2 z; }"));
  return type;
}

}  // namespace qex::vornath
