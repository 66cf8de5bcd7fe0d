/// Render tasks: of a camera's image, and of light baked onto shapes.
#ifndef VORNATH_DATA_CATALOGUE_TASKS_HPP
#define VORNATH_DATA_CATALOGUE_TASKS_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/camera.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shape.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// The settings by which image based lights are sampled: a field's type, up to its own metadata.
inline constexpr char kIblSampling[] =
    R"s({ bool @default=true @desc="Refine image based lighting when rendering additional frames" @name="Progressive" progressive; )s"
    R"s(int @default=16 @desc="Number of samples to use for image based lighting" @max=128 @min=8 @name="Samples" @soft_max=64 samples; )s"
    R"s(})s";
struct IblSampling {
  Bool32 progressive = kTrue;
  std::int32_t samples = 16;
};

inline constexpr char kTaskGeneral[] =
    R"s({ float @default=0.0001 @desc="Initial ray origin separation from the surface to bake in default units. It can be negative." @name="Baking offset" baking_offset; )s"
    R"s({ bool @desc="Cutplanes affect only primary rays" @name="Only primary" only_primary; )s"
    R"s(bool @default=false @desc="Global switch for the rendering of cut plane caps on shapes cut by a cut plane and marked as capped" @name="Render caps" render_caps; )s"
    R"s(} @desc="Render-task-specific settings for all cut planes defined in a scene" @name="Cut planes" cut_planes; )s"
    R"s(} @desc="General render configuration settings" @name="General")s";
struct TaskGeneralData {
  float baking_offset = 0.0001F;
  struct CutPlanes {
    Bool32 only_primary = kFalse;
    Bool32 render_caps = kFalse;
  } cut_planes;
};
static_assert(sizeof(TaskGeneralData) == 12,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskAccumulation[] =
    R"s({ { bool @default=false @desc="Enable reconstruction filter." @name="Enable" enable; )s"
    R"s(float @default=1.7 @desc="Reciprocal of the variance defining the width of the Gaussian distribution." @max=3.0 @min=0.1 @name="Alpha" alpha; )s"
    R"s(float @default=1.5 @desc="Radius in pixel units of the reconstruction filter." @max=3.0 @min=0.5 @name="Radius" radius; )s"
    R"s(} @desc="Settings for the reconstruction gauss filter" @name="Reconstruction filter" reconstruction_gauss_filter; )s"
    R"s(enum { LUMINANCE; EQUAL; } @default=LUMINANCE : enum { LUMINANCE; EQUAL; } @desc="Defines how individual pixels are clamped" @name="Clamping technique" clamping_technique; )s"
    R"s(float @default=inf @desc="Threshold for clamping result pixels" @max=inf @min=0.0 @name="Clamp value" clamp_value; )s"
    R"s(float @default=1.0 @desc="Multiplier to control start value of the clamping heuristic. Multiplies the clamp value. Setting it to 1.0 will deactivate the heuristic and use regular uniform clamping." @max=inf @min=1.0 @name="Clamp multiplier" clamp_multiplier; )s"
    R"s(float @default=1.0 @desc="Multiplier to control brightness of result pixels (similar to ISO)" @max=inf @min=0.0 @name="Brightness" brightness; )s"
    R"s(bool @default=false @desc="Replaces the background with black and outputs an alpha channel masking the background. Optionally use the StraightAlpha step of the RenderGraph with this option enabled to retrieve a Straight Alpha output." @name="Transparent Background" transparent_background; )s"
    R"s(bool @default=true @name="Accumulation" accumulation; )s"
    R"s(int @default=0 @desc="Modifies the number used as seed for random sampling. The frame number is automatically added as an additional offset." @min=0 @name="Base Seed" base_seed; )s"
    R"s(} @desc="Settings for built-in post-processing of result images" @name="Accumulation")s";
struct TaskAccumulationData {
  struct ReconstructionGaussFilter {
    Bool32 enable = kFalse;
    float alpha = 1.7F;
    float radius = 1.5F;
  } reconstruction_gauss_filter;
  EnumCode clamping_technique = 0;  // LUMINANCE
  float clamp_value = kInfinity;
  float clamp_multiplier = 1.0F;
  float brightness = 1.0F;
  Bool32 transparent_background = kFalse;
  Bool32 accumulation = kTrue;
  std::int32_t base_seed = 0;
};
static_assert(sizeof(TaskAccumulationData) == 40,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskRenderRegion[] =
    R"s({ float @desc="Region offset from the left border in normalized screen coordinates" @name="Left" @soft_max=1.0 @soft_min=0.0 left; )s"
    R"s(float @desc="Region offset from the bottom border in normalized screen coordinates" @name="Bottom" @soft_max=1.0 @soft_min=0.0 bottom; )s"
    R"s(float @default=1.0 @desc="Region width in normalized screen coordinates" @name="Width" @soft_max=1.0 @soft_min=0.0 width; )s"
    R"s(float @default=1.0 @desc="Region height in normalized screen coordinates" @name="Height" @soft_max=1.0 @soft_min=0.0 height; )s"
    R"s(} @desc="The box-shaped region of the image that should be rendered, everything outside is cut off" @name="Render region")s";
struct TaskRenderRegionData {
  float left = 0.0F;
  float bottom = 0.0F;
  float width = 1.0F;
  float height = 1.0F;
};
static_assert(sizeof(TaskRenderRegionData) == 16,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskGlobalIllumination[] =
    R"s({ int @default=1 @desc="The edge length of a subsampling pixel for which a single ray is traced per iteration." @min=1 @name="Pixel subsampling" @soft_max=8 pixel_subsampling; )s"
    R"s({ enum { FIXED; ADAPTIVE; } @default=ADAPTIVE : enum { FIXED; ADAPTIVE; } @desc="Russian roulette termination scheme." @name="Scheme" scheme; )s"
    R"s(int @default=2 @desc="Ray depth at which russian roulette is first performed to terminate the ray." @min=0 @name="Start depth" @soft_max=32 start_depth; )s"
    R"s(float @default=0.1 @desc="Probabiliy threshold for fixed mode russian roulette." @max=1.0 @min=0.0 @name="Fixed probability" fixed_probability; )s"
    R"s(} @desc="Russian Roulette termination parameters" @name="Russian Roulette termination" russian_roulette_termination; )s"
    R"s({ enum { EQUAL; PROPORTIONAL; } @default=EQUAL : enum { EQUAL; PROPORTIONAL; } @desc="Importance sampling method" @name="Importance method" importance_method; )s"
    R"s(float @default=1.0 @desc="Sampling ration between meshlights and other lights." @min=0.0 @name="Meshlight sampling ratio" @soft_max=10.0 meshlight_sampling_ratio; )s"
    R"s(} @desc="Parameters for light importance sampling" @name="Light importance sampling" light_importance_sampling; )s"
    R"s(float @default=0.5 @desc="Determines glossy ray generation" @max=1.0 @min=0.0 @name="Glossy threshold" glossy_threshold; )s"
    R"s(int @default=32 @desc="Maximum number of bounces" @min=0 @name="Maximum bounces" max_bounces; )s"
    R"s(bool @default=true @desc="Determines whether glass casts shadows." @name="Glass casts shadow" glass_casts_shadows; )s"
    R"s(bool @default=true @desc="Disable potentially high variance caustic paths when set to false" @name="Caustic paths" caustic_paths; )s"
    R"s(bool @desc="Use final gathering for indirect illumination" @name="Final gathering" final_gathering; )s"
    R"s(bool @desc="Use photon mapping for caustic computation" @name="Caustic photons" caustic_photons; )s"
    R"s(bool @desc="Optimize sampling in scenes with many lights" @name="Location-based importance sampling" lbis_sampling; )s"
    R"s(} @desc="Settings for legacy global illumination" @hide @legacy_gi @name="Global illumination")s";
struct TaskGlobalIlluminationData {
  std::int32_t pixel_subsampling = 1;
  struct RussianRouletteTermination {
    EnumCode scheme = 1;  // ADAPTIVE
    std::int32_t start_depth = 2;
    float fixed_probability = 0.1F;
  } russian_roulette_termination;
  struct LightImportanceSampling {
    EnumCode importance_method = 0;  // EQUAL
    float meshlight_sampling_ratio = 1.0F;
  } light_importance_sampling;
  float glossy_threshold = 0.5F;
  std::int32_t max_bounces = 32;
  Bool32 glass_casts_shadows = kTrue;
  Bool32 caustic_paths = kTrue;
  Bool32 final_gathering = kFalse;
  Bool32 caustic_photons = kFalse;
  Bool32 lbis_sampling = kFalse;
};
static_assert(sizeof(TaskGlobalIlluminationData) == 52,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskPhotonMaps[] =
    R"s({ { int @default=1000000 @desc="Number of photon paths that are started" @min=0 @name="Number of photon paths" num_started_photon_paths; )s"
    R"s(int @default=8 @desc="Maximum number of bounces per photon path" @min=0 @name="Maximum bounces" @soft_max=32 max_bounces; )s"
    R"s(float @default=0.01 @desc="Photon search radius" @logscale @min=0.0 @name="Radius" @si_unit="m" @soft_max=1.0 radius; )s"
    R"s(bool @desc="Recompute photon map each sub-frame during progressive rendering" @name="Recompute" recompute_photon_map; )s"
    R"s(bool @desc="Precompute photon irradiance" @name="Precompute irradiance" precompute_irradiance; )s"
    R"s(} @desc="Parameters for final gather photons" @name="Final gather map" final_gather_map; )s"
    R"s({ int @default=1000000 @desc="Number of photon paths that are started" @min=0 @name="Number of photon paths" num_started_photon_paths; )s"
    R"s(int @default=8 @desc="Maximum number of bounces per photon path" @min=0 @name="Maximum bounces" @soft_max=32 max_bounces; )s"
    R"s(float @default=0.001 @desc="Photon search radius" @logscale @min=0.0 @name="Radius" @si_unit="m" @soft_max=1.0 radius; )s"
    R"s(bool @desc="Recompute photon map each sub-frame during progressive rendering" @name="Recompute" recompute_photon_map; )s"
    R"s(bool @desc="Precompute photon irradiance" @name="Precompute irradiance" precompute_irradiance; )s"
    R"s(} @desc="Parameters for caustic photons" @name="Caustic map" caustic_map; )s"
    R"s(enum { NONE; CAUSTIC_MAP; PHOTON_MAP; } @default=NONE : enum { NONE; CAUSTIC_MAP; PHOTON_MAP; } @desc="Visualization mode for photon maps" @name="Visualization" visualization; )s"
    R"s(} @desc="Photon map settings" @hide @legacy_gi @name="Photon maps")s";
struct TaskPhotonMapsData {
  struct FinalGatherMap {
    std::int32_t num_started_photon_paths = 1000000;
    std::int32_t max_bounces = 8;
    float radius = 0.01F;
    Bool32 recompute_photon_map = kFalse;
    Bool32 precompute_irradiance = kFalse;
  } final_gather_map;
  struct CausticMap {
    std::int32_t num_started_photon_paths = 1000000;
    std::int32_t max_bounces = 8;
    float radius = 0.001F;
    Bool32 recompute_photon_map = kFalse;
    Bool32 precompute_irradiance = kFalse;
  } caustic_map;
  EnumCode visualization = 0;  // NONE
};
static_assert(sizeof(TaskPhotonMapsData) == 44,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskAmbientOcclusion[] =
    R"s({ int @default=16 @desc="The number of ambient occlusion rays that are generated. Must be a number from the range [1,16]." @max=16 @min=1 @name="Number of Samples" num_samples; )s"
    R"s(float @default=1.0 @desc="The length of ambient occlusion rays that are generated." @min=0.0 @name="Ray length" @si_unit="m" tmax; )s"
    R"s(bool @default=false @desc="Unbumped shading normal is used for ambient occlusion if enabled." @name="Ignore Bumpmapping" ignore_bumpmapping; )s"
    R"s(} @ambient_occlusion @desc="Ambient Occlusion Settings" @hide @name="Ambient occlusion")s";
struct TaskAmbientOcclusionData {
  std::int32_t num_samples = 16;
  float tmax = 1.0F;
  Bool32 ignore_bumpmapping = kFalse;
};
static_assert(sizeof(TaskAmbientOcclusionData) == 12,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskWavefront[] =
    R"s({ int @default=32 @desc="Maximum number of bounces until a path is terminated" @min=0 @name="Maximum bounces" @soft_max=64 max_bounces; )s"
    R"s(bool @default=true @desc="Use explicit sampling of IBL light." @name="Sample IBL" sample_IBL; )s"
    R"s(bool @default=false @desc="Start paths at lights for fast caustics." @name="Light Tracing" light_tracing; )s"
    R"s(enum { ALL; PATHTRACING; LIGHTTRACING; PHOTONMAPPING; PATHTRACING_MIS; LIGHTTRACING_MIS; PHOTONMAPPING_MIS; PT_MIS_PASS; LTPM_PASS; } @default=ALL : enum { ALL; PATHTRACING; LIGHTTRACING; PHOTONMAPPING; PATHTRACING_MIS; LIGHTTRACING_MIS; PHOTONMAPPING_MIS; PT_MIS_PASS; LTPM_PASS; } @name="Lighttracing view" lighttracing_visualisation; )s"
    R"s(bool @default=true @desc="Use next event estimation for subsurface scattering." @name="SSS Next Event Estimation" sss_next_ee; )s"
    R"s(bool @default=false @desc="Use photons for caustics seen after singular events." @name="Photon Mapping Caustics" photon_mapping; )s"
    R"s(float @default=0.01 @desc="Photon search radius" @logscale @min=0.0 @name="Photon search radius" @si_unit="m" @soft_max=1.0 photon_radius; )s"
    R"s(bool @default=false @desc="Alpha channel is affected by the refraction of the material." @name="Refraction in alpha" refraction_in_alpha; )s"
    R"s(bool @default=true @desc="Use photons for glossy caustics in reflections and refractions." @name="Glossy Photon Mapping Caustics" glossy_photon_mapping; )s"
    R"s(float @default=1.0 @desc="Higher BRDF sample pdf are glossy." @min=0.001 @name="Gloss PDF" gloss_pdf; )s"
    R"s(bool @default=true @desc="Global toggle to render or ignore rounded edge settings on shapes." @name="Rounded Edges" rounded_edges; )s"
    R"s(bool @default=false @desc="Trace light particles closer to the camera from distant lights" @name="Focused light particle" focused_light_particles; )s"
    R"s(float @default=0.0 @desc="Spectral rendering wavelength. The default value of zero disables spectral rendering. A value in the range [400, 700] only renders the specified wavelength (measured in nanometer). Any other value enables regular sampled spectral rendering." @min=0.0 @name="Spectral Wavelength" @soft_max=700.0 @soft_min=400.0 spectral_wavelength; )s"
    R"s(bool @default=false @desc="Override singular refraction with straight transmission for fast direct light through glass computation." @name="Refraction Override" refraction_override; )s"
    R"s(} @desc="Wavefront related render settings." @hide @name="Wavefront" @wavefront)s";
struct TaskWavefrontData {
  std::int32_t max_bounces = 32;
  Bool32 sample_IBL = kTrue;
  Bool32 light_tracing = kFalse;
  EnumCode lighttracing_visualisation = 0;  // ALL
  Bool32 sss_next_ee = kTrue;
  Bool32 photon_mapping = kFalse;
  float photon_radius = 0.01F;
  Bool32 refraction_in_alpha = kFalse;
  Bool32 glossy_photon_mapping = kTrue;
  float gloss_pdf = 1.0F;
  Bool32 rounded_edges = kTrue;
  Bool32 focused_light_particles = kFalse;
  float spectral_wavelength = 0.0F;
  Bool32 refraction_override = kFalse;
};
static_assert(sizeof(TaskWavefrontData) == 56,
              "its bytes go to scene files: another size is another file version");

// Left as it stands: the formatter would push all of it to the right.
// clang-format off
inline constexpr char kTaskRealtimeGi[] =
    R"s({ int @default=12 @desc="Maximum number of bounces until a path is terminated" @max=60 @min=0 @name="Maximum bounces" @soft_max=32 max_bounces; )s"
    R"s(int @default=8 @default_quality=32 @desc="Maximum number of cutout evaluation along a path" @max=60 @min=0 @name="Maximum cutout bounces" @soft_max=32 max_cutout_bounces; )s"
    R"s(int @default=4 @default_quality=16 @desc="Maximum number of secondary bounces after which an indirect light path is terminated" @max=60 @min=0 @name="Maximum indirect light bounces" @soft_max=32 max_indirect_bounces; )s"
    R"s(float @default=1.0 @max=1.0 @min=0.0 @name="Denoising" denoising; )s"
    R"s(float @default=1.0 @desc="Switches between temporal antialiasing (1) and classic accumulation (0)." @max=1.0 @min=0.0 @name="Temporal AA" taa; )s"
    R"s(float @default=0.0 @desc="Multiplier for motion blur strength." @min=0.0 @name="Motion blur" motion_blur; )s"
    R"s(enum { DISABLED; PRIMARY; FIRST_SECONDARY; LAST_SECONDARY; CLEARCOAT; INDIRECT; } @default=DISABLED : enum { DISABLED; PRIMARY; FIRST_SECONDARY; LAST_SECONDARY; CLEARCOAT; INDIRECT; } @desc="If enabled, only the selected integrator pass is considered during denoising and composition." @name="Pass filter" pass_filter; )s"
    R"s(int4 @default=int4(0, 0, 0, 0) @desc="Determines the visualized debug overlay. Use Vornathium's debug tab to configure these values." @name="Debug Overlay" debug_output_overlay; )s"
    R"s({ int @default=4 @min=0 @name="Initial mesh light candidate samples" num_meshlight_candidates; )s"
    R"s(int @default=1 @min=0 @name="Initial virtual light candidate samples" num_virtuallight_candidates; )s"
    R"s(int @default=1 @min=0 @name="Initial environment light candidate samples" num_envlight_candidates; )s"
    R"s(int @default=4 @default_quality=12 @min=0 @name="BSDF samples (not part of ReSTIR)" num_bsdf_samples; )s"
    R"s(int @default=4 @max=27 @min=0 @name="Spatial samples" num_spatial_samples; )s"
    R"s(int @default=8 @max=27 @min=0 @name="Disocclusion boost samples" num_disocclusion_boost_samples; )s"
    R"s(int @default=32 @min=0 @name="Spatial radius" spatial_radius; )s"
    R"s(int @default=20 @default_quality=50 @min=0 @name="Temporal history length" history_length; )s"
    R"s(float @default=0.01 @min=0.0 @name="Perturbation of reservoir samples after temporal resampling." @soft_max=0.1 perturbation; )s"
    R"s(} @name="Direct light" direct_light; )s"
    R"s({ float @default=1.0 @desc="Probability of sampling a mesh light over other light types during next event estimation in indirect lighting." @max=1.0 @min=0.0 @name="NEE mesh light weight" nee_meshlight_weight; )s"
    R"s(float @default=1.0 @desc="Probability of sampling a virtual light source over other light types during next event estimation in indirect lighting." @max=1.0 @min=0.0 @name="NEE virtual light weight" nee_virtuallight_weight; )s"
    R"s(float @default=1.0 @desc="Probability of sampling an environment light over other light types during next event estimation in indirect lighting." @max=1.0 @min=0.0 @name="NEE environment weight" nee_environment_weight; )s"
    R"s(int @default=2 @max=27 @min=0 @name="Spatial samples" num_spatial_samples; )s"
    R"s(int @default=64 @min=0 @name="Spatial radius" spatial_radius; )s"
    R"s(int @default=50 @max=100 @min=0 @name="Temporal history length" history_length; )s"
    R"s(float @default=1.0 @desc="If >= 0, enables Pairwise MIS for spatial resampling. The provided nonnegative value indicates the extra weight added to canonical samples. 0 equals uniform MIS, whereas 1 guarantees that canonical MIS weights are at least as large as noncanonical ones." @min=-1.0 @name="Spatial Pairwise MIS" @soft_max=1.0 spatial_pw_mis; )s"
    R"s(float @default=0.0 @desc="If >= 0, enables Pairwise MIS for temporal resampling. The provided nonnegative value indicates the extra weight added to canonical samples. 0 equals uniform MIS, whereas 1 guarantees that canonical MIS weights are at least as large as noncanonical ones." @min=-1.0 @name="Temporal Pairwise MIS" @soft_max=1.0 temporal_pw_mis; )s"
    R"s(float @default=2.0 @min=0.0 @name="Min. reconnect distance" min_reconnect_distance; )s"
    R"s(float @default=0.4 @max=1.0 @min=0.0 @name="Min. reconnect roughness" min_reconnect_roughness; )s"
    R"s(float @default=5.0 @desc="Max. allowed relative change of the target pdf before rejecting a resampled path. A value of 1 effectively disables resampling. A large value > 1e05 will disable resample thresholding." @max=inf @min=1.0 @name="Resampling threshold" max_resampling_pdf_change; )s"
    R"s(float @default=0.0 @desc="Set to non-zero value to reduce splotches, at the cost of darkening bias." @min=0.0 @name="Firefly Filter" @soft_max=0.1 firefly_filter; )s"
    R"s(float @default=150.0 @desc="Clamping factor is used to form a clamping threshold by multiplying it by the scene's maximum luminance." @min=0.0 @name="Clamping Factor" clamp_multiplier; )s"
    R"s(int @default=64 @desc="Radius of random perturbation of the temporal reprojection." @max=100 @min=0 @name="Reprojection blur radius" reprojection_radius; )s"
    R"s(} @name="Indirect light" indirect_light; )s"
    R"s({ int @default=63 @desc="[0; 63] - maximum number of linearly accumulated frames (= FPS * time of accumulation)" @max=63 @min=0 @name="Diffuse max accumulated frame num" diffuse_max_accumulated_frame_num; )s"
    R"s(int @default=63 @desc="[0; 63] - maximum number of linearly accumulated frames (= FPS * time of accumulation)" @max=63 @min=0 @name="Specular max accumulated frame num" specular_max_accumulated_frame_num; )s"
    R"s(float @default=0.0 @desc="(pixels) - pre-accumulation spatial reuse pass blur radius" @min=0.0 @name="Diffuse prepass blur radius" @soft_max=100.0 diffuse_prepass_blur_radius; )s"
    R"s(float @default=50.0 @desc="(pixels) - pre-accumulation spatial reuse pass blur radius" @min=0.0 @name="Specular prepass blur radius" @soft_max=100.0 specular_prepass_blur_radius; )s"
    R"s(bool @default=false @desc="Firefly suppression" @name="Firefly filter" firefly_filter; )s"
    R"s(} @desc="Direct light denoiser (ReLAX) related settings for Realtime GI." @name="Direct light denoiser" direct_light_denoiser; )s"
    R"s({ int @default=63 @desc="[0; 63] - maximum number of linearly accumulated frames (= FPS * time of accumulation)" @max=63 @min=0 @name="Max accumulated frame num" max_accumulated_frame_num; )s"
    R"s(int @default=6 @desc="[0; REBLUR_MAX_HISTORY_FRAME_NUM] - maximum number of linearly accumulated frames in fast history (less than maxAccumulatedFrameNum)" @max=63 @min=0 @name="Max fast accumulated frame num" max_fast_accumulated_frame_num; )s"
    R"s(int @default=3 @desc="[0; REBLUR_MAX_HISTORY_FRAME_NUM] - number of reconstructed frames after history reset (less than maxFastAccumulatedFrameNum)" @max=63 @min=0 @name="History fix frame num" history_fix_frame_num; )s"
    R"s(float @default=30.0 @desc="(pixels) - pre-accumulation spatial reuse pass blur radius" @min=0.0 @name="Diffuse prepass blur radius" @soft_max=100.0 diffuse_prepass_blur_radius; )s"
    R"s(float @default=50.0 @desc="(pixels) - pre-accumulation spatial reuse pass blur radius" @min=0.0 @name="Specular prepass blur radius" @soft_max=100.0 specular_prepass_blur_radius; )s"
    R"s(float @default=50.0 @desc="(pixels) - base (worst case) denoising radius (30 is a baseline for 1440p)" @min=1.0 @name="Blur radius" @soft_max=100.0 blur_radius; )s"
    R"s(bool @default=false @desc="Adds bias in case of badly defined signals, but tries to fight with fireflies" @name="Firefly filter" firefly_filter; )s"
    R"s(bool @default=false @desc="Turns off spatial filtering and virtual motion based specular tracking" @name="Reference accumulation" reference_accumulation; )s"
    R"s(bool @default=false @desc="Boosts performance by sacrificing IQ" @name="Performance mode" performance_mode; )s"
    R"s({ float @default=0.03 @desc="(normalized %) - must be big enough to almost ignore residual noise (boiling), default is tuned for 0.5rpp in general)" @max=1.0 @min=0.0 @name="Threshold min" threshold_min; )s"
    R"s(float @default=0.2 @desc="(normalized %) - max > min, usually 3-5x times greater than min" @min=0.0 @name="Threshold max" @soft_max=1.0 threshold_max; )s"
    R"s(float @default=1.0 @desc="(> 0) - real delta is reduced by local variance multiplied by this value" @min=0.0 @name="Sigma scale" @soft_max=20.0 sigma_scale; )s"
    R"s(float @default=0.0 @desc="(intensity units) - bigger values make antilag less sensitive to lightness fluctuations in dark places" @max=1.0 @min=1.e-05 @name="Sensitivity to darkness" sensitivity_to_darkness; )s"
    R"s(bool @default=false @desc="Ideally, must be enabled, but since sensitivityToDarkness requires fine tuning from the app side it is disabled by default" @name="Enable" enable; )s"
    R"s(} @name="Indirect light denoiser antilag intensity settings" indirect_light_denoiser_antilag_intensity; )s"
    R"s({ float @default=0.03 @desc="(normalized %) - must almost ignore residual noise (boiling), default is tuned for 0.5rpp for the worst case" @max=1.0 @min=0.0 @name="Threshold min" threshold_min; )s"
    R"s(float @default=0.2 @desc="(normalized %) - max > min, usually 2-4x times greater than min" @min=0.0 @name="Threshold max" @soft_max=1.0 threshold_max; )s"
    R"s(float @default=1.0 @desc="(> 0) - real delta is reduced by local variance multiplied by this value" @min=0.0 @name="Sigma scale" @soft_max=20.0 sigma_scale; )s"
    R"s(float @default=0.1 @desc="(0; 1] - hit distances are normalized" @max=1.0 @min=1.e-05 @name="Sensitivity to darkness" sensitivity_to_darkness; )s"
    R"s(bool @default=true @desc="Enabled by default" @name="Enable" enable; )s"
    R"s(} @name="Indirect light denoiser antilag distance settings" indirect_light_denoiser_antilag_distance; )s"
    R"s(} @desc="Indirect light denoiser (ReBLUR) related settings for Realtime GI." @name="Indirect light denoiser" indirect_light_denoiser; )s"
    R"s({ int @default=1 @desc="Semantic filter for kernel print statements" @flags="Print,GBuf,Direct,Indirect,Launch,Ray,Resampling,Shade" @name="Trace flags" flags; )s"
    R"s(int2 @desc="Thread launch id filter for kernel print statements (L: copy from cursor position)" @name="Launch index" launch_id; )s"
    R"s(} @name="Kernel debug settings" kernel_debug; )s"
    R"s({ int @default=128 @desc="Number of buckets. Increase: Less inter-tile correlations. Decrease: Less compute & memory, better cache utilization." @min=1 @name="Bucket Count" bucket_count; )s"
    R"s(int @default=1024 @desc="Number of light samples per bucket. Increase: Less intra-tile correlations, higher chance of finding meaningful light. Decrease: Less compute & memory, better cache utilization." @min=1 @name="Bucket Size" bucket_size; )s"
    R"s(int @default=8 @desc="Size of tiles in which pixels will access the same light bucket. Increase: Better cache utilization. Decrease: Less spatial correlations" @min=1 @name="Tile Size" tile_size; )s"
    R"s(} @desc="Light Presampling related settings for Realtime GI." @name="Light Presampling" light_presampling; )s"
    R"s(enum { NRD_UPSCALER; NRD_TAA; DLSS; AUTO; } @default=AUTO : enum { NRD_UPSCALER; NRD_TAA; DLSS; AUTO; } @name="Denoiser" denoiser; )s"
    R"s(enum { NONE; QUALITY; BALANCED; PERFORMANCE; ULTRA_PERFORMANCE; AUTO; } @default=AUTO : enum { NONE; QUALITY; BALANCED; PERFORMANCE; ULTRA_PERFORMANCE; AUTO; } @name="Image upscaling" upscaling; )s"
    R"s(float @default=0.8 @default_quality=0.1 @name="Artistic sky sampling probability" artistic_sky_sampling_probability; )s"
    R"s(float @default=0.0 @min=0.0 @name="DLSS filter" @soft_max=1.0 dlss_input_clamping; )s"
    R"s(} @hide @name="Realtime gi" @realtime_gi)s";
// clang-format on
struct TaskRealtimeGiData {
  std::int32_t max_bounces = 12;
  std::int32_t max_cutout_bounces = 8;
  std::int32_t max_indirect_bounces = 4;
  float denoising = 1.0F;
  float taa = 1.0F;
  float motion_blur = 0.0F;
  EnumCode pass_filter = 0;  // DISABLED
  Padding32 padding0 = 0;
  Int4 debug_output_overlay;
  struct DirectLight {
    std::int32_t num_meshlight_candidates = 4;
    std::int32_t num_virtuallight_candidates = 1;
    std::int32_t num_envlight_candidates = 1;
    std::int32_t num_bsdf_samples = 4;
    std::int32_t num_spatial_samples = 4;
    std::int32_t num_disocclusion_boost_samples = 8;
    std::int32_t spatial_radius = 32;
    std::int32_t history_length = 20;
    float perturbation = 0.01F;
  } direct_light;
  struct IndirectLight {
    float nee_meshlight_weight = 1.0F;
    float nee_virtuallight_weight = 1.0F;
    float nee_environment_weight = 1.0F;
    std::int32_t num_spatial_samples = 2;
    std::int32_t spatial_radius = 64;
    std::int32_t history_length = 50;
    float spatial_pw_mis = 1.0F;
    float temporal_pw_mis = 0.0F;
    float min_reconnect_distance = 2.0F;
    float min_reconnect_roughness = 0.4F;
    float max_resampling_pdf_change = 5.0F;
    float firefly_filter = 0.0F;
    float clamp_multiplier = 150.0F;
    std::int32_t reprojection_radius = 64;
  } indirect_light;
  struct DirectLightDenoiser {
    std::int32_t diffuse_max_accumulated_frame_num = 63;
    std::int32_t specular_max_accumulated_frame_num = 63;
    float diffuse_prepass_blur_radius = 0.0F;
    float specular_prepass_blur_radius = 50.0F;
    Bool32 firefly_filter = kFalse;
  } direct_light_denoiser;
  struct IndirectLightDenoiser {
    std::int32_t max_accumulated_frame_num = 63;
    std::int32_t max_fast_accumulated_frame_num = 6;
    std::int32_t history_fix_frame_num = 3;
    float diffuse_prepass_blur_radius = 30.0F;
    float specular_prepass_blur_radius = 50.0F;
    float blur_radius = 50.0F;
    Bool32 firefly_filter = kFalse;
    Bool32 reference_accumulation = kFalse;
    Bool32 performance_mode = kFalse;
    struct IndirectLightDenoiserAntilagIntensity {
      float threshold_min = 0.03F;
      float threshold_max = 0.2F;
      float sigma_scale = 1.0F;
      float sensitivity_to_darkness = 0.0F;
      Bool32 enable = kFalse;
    } indirect_light_denoiser_antilag_intensity;
    struct IndirectLightDenoiserAntilagDistance {
      float threshold_min = 0.03F;
      float threshold_max = 0.2F;
      float sigma_scale = 1.0F;
      float sensitivity_to_darkness = 0.1F;
      Bool32 enable = kTrue;
    } indirect_light_denoiser_antilag_distance;
  } indirect_light_denoiser;
  Padding32 padding1 = 0;
  struct KernelDebug {
    std::int32_t flags = 1;
    Padding32 padding0 = 0;
    Int2 launch_id;
  } kernel_debug;
  struct LightPresampling {
    std::int32_t bucket_count = 128;
    std::int32_t bucket_size = 1024;
    std::int32_t tile_size = 8;
  } light_presampling;
  EnumCode denoiser = 3;   // AUTO
  EnumCode upscaling = 5;  // AUTO
  float artistic_sky_sampling_probability = 0.8F;
  float dlss_input_clamping = 0.0F;
  Padding32 padding2 = 0;
};
static_assert(sizeof(TaskRealtimeGiData) == 288,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kTaskRasterizer = vrnt::detail::joinText(
    R"s({ enum { SCENE; VOXEL_GRID; } @default=SCENE : enum { SCENE; VOXEL_GRID; } @desc="Allows switching between regular scene rendering and special visualization modes" @name="Visualization mode" visualization_mode; )s"
    R"s(bool @default=true @desc="Enables or disables all shadowing" @name="Shadows" shadows; )s"
    R"s({ float @default=1.0 @desc="Darkness of ambient occlusion shadows" @min=0.0 @name="Darkness" @soft_max=3.0 darkness; )s"
    R"s(float @default=1.0 @desc="Intensity of edge shadows" @min=0.0 @name="Edge intensity" @soft_max=3.0 edge_intensity; )s"
    R"s(float @default=0.01 @desc="Edge detection distance" @logscale @min=0.0 @name="Edge depth threshold" @si_unit="m" @soft_max=1.0 edge_depth_threshold; )s"
    R"s(} @desc="Voxel-based ambient occlusion settings" @name="Ambient occlusion" ambient_occlusion; )s"
    R"s({ bool @desc="Apply multisampling to fully opaque obejcts" @name="Opaque" opaque; )s"
    R"s(bool @desc="Apply multisampling to transparent objects, requires opaque to be enabled" @name="Transparent" transparent; )s"
    R"s(int @default=2 @desc="Number of samples used in multisampling stages" @max=16 @min=2 @name="Sample count" num_samples; )s"
    R"s(float @default=inf @desc="Threshold for luminance-clamping result pixels. This clamping is applied before combining any MSAA samples." @max=inf @min=0.0 @name="Clamp value" clamp_value; )s"
    R"s(} @desc="OpenGL hardware multisampling antialiasing settings" @name="Multisampling antialiasing" multisampling_antialiasing; )s"
    R"s(bool @desc="Use fullscreen antialiasing" @name="Fullscreen antialiasing" fullscreen_antialiasing; )s",
    kIblSampling,
    R"s( @desc="Sampling mode for image based lighting" @name="IBL sampling" ibl_sampling_mode; )s"
    R"s({ float @default=0.0 @desc="Red channel of backface highlighting color" @max=1.0 @min=0.0 @name="Red" red; )s"
    R"s(float @default=0.0 @desc="Green channel of backface highlighting color" @max=1.0 @min=0.0 @name="Green" green; )s"
    R"s(float @default=0.0 @desc="Blue channel of backface highlighting color" @max=1.0 @min=0.0 @name="Blue" blue; )s"
    R"s(float @default=0.0 @desc="Alpha channel of backface highlighting color" @max=1.0 @min=0.0 @name="Alpha" alpha; )s"
    R"s(} @desc="RGBA color values used for backface highlighting" @name="Backface highlighting color" backface_highlighting_color; )s"
    R"s(} @desc="Rasterizer-specific settings" @hide @name="Rasterizer" @rasterizer)s");
struct TaskRasterizerData {
  EnumCode visualization_mode = 0;  // SCENE
  Bool32 shadows = kTrue;
  struct AmbientOcclusion {
    float darkness = 1.0F;
    float edge_intensity = 1.0F;
    float edge_depth_threshold = 0.01F;
  } ambient_occlusion;
  struct MultisamplingAntialiasing {
    Bool32 opaque = kFalse;
    Bool32 transparent = kFalse;
    std::int32_t num_samples = 2;
    float clamp_value = kInfinity;
  } multisampling_antialiasing;
  Bool32 fullscreen_antialiasing = kFalse;
  IblSampling ibl_sampling_mode;
  struct BackfaceHighlightingColor {
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 0.0F;
  } backface_highlighting_color;
};
static_assert(sizeof(TaskRasterizerData) == 64,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kTaskWhittedRaytracing = vrnt::detail::joinText(
    R"s({ int @default=1 @desc="The edge length of a subsampling pixel for which a single ray is traced per iteration." @min=1 @name="Pixel subsampling" @soft_max=8 pixel_subsampling; )s"
    R"s(float @default=0.001 @desc="Rays are terminated when their relative contribution falls below this threshold." @max=1.0 @min=0.0 @name="Ray contribution threshold" ray_contribution_threshold; )s"
    R"s(float @default=0.99 @desc="Determines glossy ray generation." @max=1.0 @min=0.0 @name="Glossy threshold" glossy_threshold; )s"
    R"s(int @default=4 @desc="Maximum number of bounces of rays." @min=0 @name="Maximum bounces" @soft_max=32 max_bounces; )s",
    kIblSampling,
    R"s( @desc="Sampling mode for image based lighting" @name="IBL sampling" @reuse_type ibl_sampling; )s"
    R"s(} @desc="Settings for whitted raytracing" @hide @name="Whitted raytracing" @whitted)s");
struct TaskWhittedRaytracingData {
  std::int32_t pixel_subsampling = 1;
  float ray_contribution_threshold = 0.001F;
  float glossy_threshold = 0.99F;
  std::int32_t max_bounces = 4;
  IblSampling ibl_sampling;
};
static_assert(sizeof(TaskWhittedRaytracingData) == 24,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kTaskDiagnostic[] =
    R"s({ int @default=1024 @desc="Maximum iterations the raytracing kernel is to perform over the raystack" @max=65536 @min=0 @name="Maximum iterations" max_iterations; )s"
    R"s(} @desc="Render parameters which may help diagnosing issues" @name="Diagnostic")s";
struct TaskDiagnosticData {
  std::int32_t max_iterations = 1024;
};
static_assert(sizeof(TaskDiagnosticData) == 4,
              "its bytes go to scene files: another size is another file version");

// Both kinds of task have the same groups, baking settings included.
struct TaskGroups {
  TaskGeneralData general;
  TaskAccumulationData accumulation;
  TaskRenderRegionData renderRegion;
  TaskGlobalIlluminationData globalIllumination;
  TaskPhotonMapsData photonMaps;
  TaskAmbientOcclusionData ambientOcclusion;
  TaskWavefrontData wavefront;
  Padding32 padding0[2] = {};
  TaskRealtimeGiData realtimeGi;
  TaskRasterizerData rasterizer;
  TaskWhittedRaytracingData whittedRaytracing;
  TaskDiagnosticData diagnostic;
  Padding32 padding1 = 0;
};
static_assert(sizeof(TaskGroups) == 624 && std::is_trivially_copyable_v<TaskGroups>,
              "its bytes go to scene files: another size is another file version");
static_assert(
    offsetof(TaskGroups, general) == 0 && offsetof(TaskGroups, accumulation) == 12 &&
        offsetof(TaskGroups, renderRegion) == 52 &&
        offsetof(TaskGroups, globalIllumination) == 68 && offsetof(TaskGroups, photonMaps) == 120 &&
        offsetof(TaskGroups, ambientOcclusion) == 164 && offsetof(TaskGroups, wavefront) == 176 &&
        offsetof(TaskGroups, realtimeGi) == 240 && offsetof(TaskGroups, rasterizer) == 528 &&
        offsetof(TaskGroups, whittedRaytracing) == 592 && offsetof(TaskGroups, diagnostic) == 616,
    "scene files have the groups at these offsets: others are another file version");

inline constexpr auto kTaskGroups = std::tuple{
    Group{"General", kTaskGeneral, &TaskGroups::general},
    Group{"Accumulation", kTaskAccumulation, &TaskGroups::accumulation},
    Group{"Render region", kTaskRenderRegion, &TaskGroups::renderRegion},
    Group{"Global illumination", kTaskGlobalIllumination, &TaskGroups::globalIllumination},
    Group{"Photon maps", kTaskPhotonMaps, &TaskGroups::photonMaps},
    Group{"Ambient occlusion", kTaskAmbientOcclusion, &TaskGroups::ambientOcclusion},
    Group{"Wavefront", kTaskWavefront, &TaskGroups::wavefront},
    Group{"Realtime gi", kTaskRealtimeGi, &TaskGroups::realtimeGi},
    Group{"Rasterizer", kTaskRasterizer, &TaskGroups::rasterizer},
    Group{"Whitted raytracing", kTaskWhittedRaytracing, &TaskGroups::whittedRaytracing},
    Group{"Diagnostic", kTaskDiagnostic, &TaskGroups::diagnostic}};

struct ImageTaskDesc {
  using Groups = TaskGroups;

  Ref<Instance<CameraDesc>> camera;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::ImageTask;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "ImageTask";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kTaskGroups;
  static constexpr auto kSlots = std::tuple{
      Slot{"camera", ReferenceKind::Required, ObjectClass::Camera, &ImageTaskDesc::camera}};
};

struct BakeTaskDesc {
  using Groups = TaskGroups;

  RefList<Instance<ShapeDesc>> shapes;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::BakeTask;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "BakeTask";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kTaskGroups;
  static constexpr auto kSlots =
      std::tuple{Slot{"shapes", ReferenceKind::List, ObjectClass::Shape, &BakeTaskDesc::shapes}};
};

}  // namespace vrnt::data

#endif
