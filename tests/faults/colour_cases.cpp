// Colour, and the fixed types of what programs take.
#include <cmath>

#include "fault_table.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_test {
namespace {

// A type that the first call makes for good.
FaultCase fixedType(const char* function, const char* what, vrntType_t* (*get)()) {
  return {function, what, Promise::BadAlloc,
          [get] {
            return making<TypeHandle>(
                [get](vrntValuesError_t**) { return get(); },
                [get](vrntType_t* type) { EXPECT_EQ(TypeHandle(get()).get(), type); });
          },
          Allocations::FirstCall};
}

// The number that belongs to a type, the first time that types are compared with those numbers.
FaultCase fixedNumber(const char* function, std::int32_t (*number)(const vrntType_t*),
                      const char* text, std::int32_t expected) {
  return {function, "", Promise::BadAlloc,
          [=] {
            const auto answer = std::make_shared<std::int32_t>();
            Call call;
            call.make = [type = sharedType(text), answer, number](vrntValuesError_t**) {
              *answer = number(type.get());
              return true;
            };
            call.right = [=] { EXPECT_EQ(*answer, expected); };
            return call;
          },
          Allocations::FirstCall};
}

constexpr const char* kSpectra =
    "{ a = { encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 1.0, 0.5, 0.25 ]; "
    "}; b = { encoding = SPECTRAL : enum { LUMINANCE; RGB; SPECTRAL; }; "
    "spectrum = &[ 0.0, 0.0, 400.0, 1.0, 700.0, 0.0 ]; }; }";

vrntValueView_t spectrumAt(const SharedValue& spectra, std::uint32_t index) {
  vrntValueView_t view{};
  vrntValueStructField(&view, vrntValueType(spectra.get()), index);
  return view;
}

void addConversions(FaultCases& cases) {
  cases.push_back(quiet("vrntBlackbodyToRGB", [] {
    return [] {
      float rgb[3];
      vrntBlackbodyToRGB(rgb, 6500);
      return rgb[0] > 0 && std::isfinite(rgb[2]);
    };
  }));
  cases.push_back(
      quiet("vrntPlancksLaw", [] { return [] { return vrntPlancksLaw(550, 6500) > 0; }; }));
  cases.push_back({"vrntSpectrumConvert", "resampled", Promise::BadAlloc, [] {
                     struct Data {
                       float in[8]{0, 0, 400, 1, 500, 2, 0, 0};
                       float out[8]{};
                     };
                     const auto data = std::make_shared<Data>();
                     Call call;
                     call.before = [data] {
                       *data = {};
                       const float out[8]{0, 0, 400, 9, 500, 9, 0, 0};
                       std::memcpy(data->out, out, sizeof(out));
                     };
                     call.make = [data](vrntValuesError_t**) {
                       const vrntSpectrumRec from{VRNT_ENCODING_SPECTRAL, 8, data->in};
                       vrntSpectrumRec to{VRNT_ENCODING_SPECTRAL, 8, data->out};
                       vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
                       return true;
                     };
                     call.right = [data] {
                       EXPECT_EQ(data->out[3], 1.0F);
                       EXPECT_EQ(data->out[5], 2.0F);
                     };
                     call.intact = [data] {
                       EXPECT_EQ(data->out[3], 9.0F);
                       EXPECT_EQ(data->out[5], 9.0F);
                     };
                     return call;
                   }});
  cases.push_back({"vrntSpectrumConvert", "to RGB", Promise::BadAlloc, [] {
                     const auto rgb = std::make_shared<std::array<float, 3>>();
                     Call call;
                     call.before = [rgb] { rgb->fill(-7); };
                     call.make = [rgb](vrntValuesError_t**) {
                       float in[]{0, 0, 400, 1, 500, 2, 0, 0};
                       const vrntSpectrumRec from{VRNT_ENCODING_SPECTRAL, 8, in};
                       vrntSpectrumRec to{VRNT_ENCODING_RGB, 0, rgb->data()};
                       vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
                       return true;
                     };
                     call.right = [rgb] { EXPECT_NE((*rgb)[0], -7); };
                     call.intact = [rgb] { EXPECT_EQ(*rgb, (std::array<float, 3>{-7, -7, -7})); };
                     return call;
                   }});
  cases.push_back(quiet("vrntValueToRGB", [] {
    // The first use makes the type with which the value's is compared.
    EXPECT_NE(TypeHandle(vrntTypeSpectrum()), nullptr);
    return [spectra = sharedValue(kSpectra)] {
      const vrntValueView_t rgb = spectrumAt(spectra, 0);
      const vrntValueView_t sampled = spectrumAt(spectra, 1);
      float out[3];
      return vrntValueToRGB(spectra.get(), &sampled, VRNT_COLOUR_SPACE_E, out) == 0 &&
             vrntValueToRGB(spectra.get(), &rgb, VRNT_COLOUR_SPACE_E, out) == 0 && out[0] == 1.0F;
    };
  }));
  for (const std::uint32_t index : {0u, 1u}) {
    cases.push_back({"vrntValueToSPD", "", Promise::Failure, [index] {
                       const auto pairs = std::make_shared<std::array<float, 6>>();
                       Call call;
                       call.before = [pairs] { *pairs = {450, 9, 500, 9, 600, 9}; };
                       call.make = [spectra = sharedValue(kSpectra), index,
                                    pairs](vrntValuesError_t**) {
                         const vrntValueView_t view = spectrumAt(spectra, index);
                         return vrntValueToSPD(spectra.get(), &view, 6, pairs->data()) == 0;
                       };
                       call.right = [pairs] { EXPECT_NE((*pairs)[1], 9); };
                       call.intact = [pairs] {
                         EXPECT_EQ(*pairs, (std::array<float, 6>{450, 9, 500, 9, 600, 9}));
                       };
                       return call;
                     }});
  }
}

}  // namespace

void addColourCases(FaultCases& cases) {
  // In the order in which none has made another before: those that are made of others come first.
  cases.push_back(
      fixedNumber("vrntTypeSamplerType", vrntTypeSamplerType, "{ int no_sampler; }", -1));
  cases.push_back(fixedNumber("vrntTypeMaterialParamType", vrntTypeMaterialParamType,
                              "{ int no_parameter; }", -1));
  cases.push_back(fixedType("vrntTypeMaterialParam", "", [] {
    return vrntTypeMaterialParam(VRNT_MATERIAL_PARAM_SIMPLE_NORMAL);
  }));
  cases.push_back(
      fixedType("vrntTypeSampler", "", [] { return vrntTypeSampler(VRNT_SAMPLER_NORMAL); }));
  cases.push_back(fixedType("vrntTypeEmission", "", vrntTypeEmission));
  cases.push_back(fixedType("vrntTypeLightUnit", "", vrntTypeLightUnit));
  cases.push_back(fixedType("vrntTypeSpectrum", "", vrntTypeSpectrum));
  cases.push_back(fixedType("vrntTypeTexture", "", vrntTypeTexture));
  cases.push_back(fixedType("vrntTypeUVTransformation", "", vrntTypeUVTransformation));
  cases.push_back(fixedType("vrntTypeWrapmode", "", vrntTypeWrapmode));
  cases.push_back(
      fixedType("vrtnTypeFloatArray", "permanent", [] { return vrtnTypeFloatArray(166); }));
  cases.push_back({"vrntTypeDescriptor", "first", Promise::BadAlloc,
                   [] {
                     const auto answer = std::make_shared<std::uint32_t>();
                     Call call;
                     call.make = [type = sharedType("{ int q; }"), answer](vrntValuesError_t**) {
                       *answer = vrntTypeDescriptor(type.get());
                       return true;
                     };
                     call.right = [answer] {
                       EXPECT_EQ(*answer, std::uint32_t{VRNT_DESCRIPTOR_STRUCT});
                     };
                     return call;
                   },
                   Allocations::FirstCall});
  cases.push_back(
      {"vrntTypeToUniversalSpectrum", "", Promise::BadAlloc, [] {
         return makingType(
             [type = sharedType("{ { float3 spectrum; } @a=\"b\" s; { { float3 "
                                "spectrum; } t; int @default=3 n; }[2] l; }")](
                 vrntValuesError_t**) { return vrntTypeToUniversalSpectrum(type.get()); },
             "{ { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } "
             "@a=\"b\" @name=\"Spectrum\" s; { { enum { LUMINANCE; RGB; SPECTRAL; } "
             "encoding; float[]* spectrum; } @name=\"Spectrum\" t; int @default=3 n; "
             "}[2] l; }");
       }});
  addConversions(cases);
}

}  // namespace vornath_test
