"""The classes of objects with their groups, fields and slots.

Written by scripts/write_python_stubs.py from the catalogue; do not edit."""
# fmt: off
from typing import Literal

from . import assets
from ._records import Elements, Fields, GroupRecord, PartRecord
from .scene import Instance, Objects, Program, ReferenceList
from .values import Value

class KeyframeTransformation(GroupRecord):
    px: float
    py: float
    pz: float
    sx: float
    sy: float
    sz: float
    qi: float
    qj: float
    qk: float
    qr: float
    tx: float
    ty: float
    tz: float

class CameraTransformationMatrix(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class CameraTransformation(GroupRecord):
    matrix: CameraTransformationMatrix

class CameraGeneral(GroupRecord):
    near_distance: float
    shutter_open: float
    shutter_close: float
    time_start: float
    time_end: float

class CameraBackground(GroupRecord):
    active: bool
    red: float
    green: float
    blue: float

class CameraBackplateImageSpectrumTexture(PartRecord):
    index: int

class CameraBackplateImageWrapmode(PartRecord):
    u: Literal['CLAMP', 'BORDER', 'REPEAT', 'MIRROR'] | int
    v: Literal['CLAMP', 'BORDER', 'REPEAT', 'MIRROR'] | int

class CameraBackplateImage(PartRecord):
    spectrum_texture: CameraBackplateImageSpectrumTexture
    wrapmode: CameraBackplateImageWrapmode
    border_spectrum: tuple[float, float, float]
    border_alpha: float

class CameraBackplateRegion(PartRecord):
    min: tuple[float, float]
    max: tuple[float, float]

class CameraBackplate(GroupRecord):
    mode: Literal['DISABLED', 'FIT_SIZE', 'FIT_WIDTH', 'FIT_HEIGHT', 'MANUAL'] | int
    image: CameraBackplateImage
    brightness: float
    region: CameraBackplateRegion
    visible_to_reflection: bool
    visible_to_refraction: bool

class TransformationGroupTransformationMatrix(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class TransformationGroupTransformation(GroupRecord):
    matrix: TransformationGroupTransformationMatrix

class LightTransformationMatrix(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class LightTransformation(GroupRecord):
    matrix: LightTransformationMatrix

class LightGeneral(GroupRecord):
    matte: bool
    unused: bool

class LightTarget(GroupRecord):
    tag: str
    custom_data: int
    visible_in_mask: bool

class LightSamplingProbability(GroupRecord):
    multiplier: float

class LightViewSpace(GroupRecord):
    translation: bool
    rotation: bool

class LightVisibilityVisibleTo(PartRecord):
    camera: bool
    reflection: Literal['FALSE', 'TRUE', 'ALL'] | int
    refraction: Literal['FALSE', 'TRUE', 'ALL'] | int
    transmission: Literal['FALSE', 'TRUE', 'ALL'] | int
    diffuse_glossy: bool
    indirect_illumination: bool
    direct_light: bool

class LightVisibilityCast(PartRecord):
    shadow: bool
    caustics: bool

class LightVisibility(GroupRecord):
    visible_to: LightVisibilityVisibleTo
    cast: LightVisibilityCast

class DecalTransformationMatrix(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class DecalTransformation(GroupRecord):
    matrix: DecalTransformationMatrix

class DecalProjectionClippingBox(PartRecord):
    min: Elements
    max: Elements

class DecalProjection(GroupRecord):
    mode: str | int
    direction: Literal['OUTSIDE_IN', 'INSIDE_OUT', 'BIDIRECTIONAL'] | int
    clipping_box: DecalProjectionClippingBox

class ShapeTransformationMatrix(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class ShapeTransformation(GroupRecord):
    matrix: ShapeTransformationMatrix

class ShapeGeneral(GroupRecord):
    geometric_representation: Literal['MESH', 'RECTANGLE', 'DISK', 'SPHERE', 'CYLINDER', 'CUBE'] | int
    edge_radius: float
    time_start: float
    time_end: float
    subdivision_edge_length: float

class ShapeTarget(GroupRecord):
    tag: str
    custom_data: int
    visible_in_mask: bool

class ShapeAmbientOcclusion(GroupRecord):
    tmax_multiplier: float
    transparent_appears_diffuse: bool

class ShapeCutPlanes(GroupRecord):
    capped: bool
    cut: Elements

class ShapeFaceCulling(GroupRecord):
    mode: Literal['DISABLED', 'FRONT', 'BACK'] | int
    only_primary_rays: bool

class ShapeMatteObjects(GroupRecord):
    matte: bool
    ground: bool

class ShapeNestedPriority(GroupRecord):
    priority: int

class ShapeProceduralUVsUvTransformation(PartRecord):
    x: tuple[float, float, float, float]
    y: tuple[float, float, float, float]
    z: tuple[float, float, float, float]
    w: tuple[float, float, float, float]

class ShapeProceduralUVs(GroupRecord):
    mode: str | int
    uv_transformation: ShapeProceduralUVsUvTransformation

class ShapeRasterizerVoxelAo(PartRecord):
    epsilon: float
    max_distance: float

class ShapeRasterizer(GroupRecord):
    voxel_ao: ShapeRasterizerVoxelAo
    accurate_reflections: bool

class ShapeHemiluxTexture(PartRecord):
    index: int

class ShapeHemiluxToneMappingTexture(PartRecord):
    index: int

class ShapeHemilux(GroupRecord):
    mode: Literal['DISABLED', 'ILLUMINATION', 'OCCLUSION'] | int
    texture: ShapeHemiluxTexture
    enable_tone_mapping: bool
    tone_mapping_texture: ShapeHemiluxToneMappingTexture
    split_value: float
    split_strength: float

class ShapeSamplingProbability(GroupRecord):
    multiplier: float

class ShapeViewSpace(GroupRecord):
    translation: bool
    rotation: bool
    scaling: bool

class ShapeVisibilityVisibleTo(PartRecord):
    camera: bool
    reflection: Literal['FALSE', 'TRUE', 'ALL'] | int
    refraction: Literal['FALSE', 'TRUE', 'ALL'] | int
    transmission: Literal['FALSE', 'TRUE', 'ALL'] | int
    indirect_illumination: bool
    photons: bool
    direct_light: bool
    light_tracing: bool

class ShapeVisibilityCast(PartRecord):
    direct_shadow: bool
    indirect_illumination: bool
    caustics: bool

class ShapeVisibilityReceive(PartRecord):
    shadow: bool
    indirect_illumination: bool
    caustics: bool

class ShapeVisibility(GroupRecord):
    visible_to: ShapeVisibilityVisibleTo
    cast: ShapeVisibilityCast
    receive: ShapeVisibilityReceive

class ImageTaskGeneralCutPlanes(PartRecord):
    only_primary: bool
    render_caps: bool

class ImageTaskGeneral(GroupRecord):
    baking_offset: float
    cut_planes: ImageTaskGeneralCutPlanes

class ImageTaskAccumulationReconstructionGaussFilter(PartRecord):
    enable: bool
    alpha: float
    radius: float

class ImageTaskAccumulation(GroupRecord):
    reconstruction_gauss_filter: ImageTaskAccumulationReconstructionGaussFilter
    clamping_technique: Literal['LUMINANCE', 'EQUAL'] | int
    clamp_value: float
    clamp_multiplier: float
    brightness: float
    transparent_background: bool
    accumulation: bool
    base_seed: int

class ImageTaskRenderRegion(GroupRecord):
    left: float
    bottom: float
    width: float
    height: float

class ImageTaskGlobalIlluminationRussianRouletteTermination(PartRecord):
    scheme: Literal['FIXED', 'ADAPTIVE'] | int
    start_depth: int
    fixed_probability: float

class ImageTaskGlobalIlluminationLightImportanceSampling(PartRecord):
    importance_method: Literal['EQUAL', 'PROPORTIONAL'] | int
    meshlight_sampling_ratio: float

class ImageTaskGlobalIllumination(GroupRecord):
    pixel_subsampling: int
    russian_roulette_termination: ImageTaskGlobalIlluminationRussianRouletteTermination
    light_importance_sampling: ImageTaskGlobalIlluminationLightImportanceSampling
    glossy_threshold: float
    max_bounces: int
    glass_casts_shadows: bool
    caustic_paths: bool
    final_gathering: bool
    caustic_photons: bool
    lbis_sampling: bool

class ImageTaskPhotonMapsFinalGatherMap(PartRecord):
    num_started_photon_paths: int
    max_bounces: int
    radius: float
    recompute_photon_map: bool
    precompute_irradiance: bool

class ImageTaskPhotonMapsCausticMap(PartRecord):
    num_started_photon_paths: int
    max_bounces: int
    radius: float
    recompute_photon_map: bool
    precompute_irradiance: bool

class ImageTaskPhotonMaps(GroupRecord):
    final_gather_map: ImageTaskPhotonMapsFinalGatherMap
    caustic_map: ImageTaskPhotonMapsCausticMap
    visualization: Literal['NONE', 'CAUSTIC_MAP', 'PHOTON_MAP'] | int

class ImageTaskAmbientOcclusion(GroupRecord):
    num_samples: int
    tmax: float
    ignore_bumpmapping: bool

class ImageTaskWavefront(GroupRecord):
    max_bounces: int
    sample_IBL: bool
    light_tracing: bool
    lighttracing_visualisation: Literal['ALL', 'PATHTRACING', 'LIGHTTRACING', 'PHOTONMAPPING', 'PATHTRACING_MIS', 'LIGHTTRACING_MIS', 'PHOTONMAPPING_MIS', 'PT_MIS_PASS', 'LTPM_PASS'] | int
    sss_next_ee: bool
    photon_mapping: bool
    photon_radius: float
    refraction_in_alpha: bool
    glossy_photon_mapping: bool
    gloss_pdf: float
    rounded_edges: bool
    focused_light_particles: bool
    spectral_wavelength: float
    refraction_override: bool

class ImageTaskRealtimeGiDirectLight(PartRecord):
    num_meshlight_candidates: int
    num_virtuallight_candidates: int
    num_envlight_candidates: int
    num_bsdf_samples: int
    num_spatial_samples: int
    num_disocclusion_boost_samples: int
    spatial_radius: int
    history_length: int
    perturbation: float

class ImageTaskRealtimeGiIndirectLight(PartRecord):
    nee_meshlight_weight: float
    nee_virtuallight_weight: float
    nee_environment_weight: float
    num_spatial_samples: int
    spatial_radius: int
    history_length: int
    spatial_pw_mis: float
    temporal_pw_mis: float
    min_reconnect_distance: float
    min_reconnect_roughness: float
    max_resampling_pdf_change: float
    firefly_filter: float
    clamp_multiplier: float
    reprojection_radius: int

class ImageTaskRealtimeGiDirectLightDenoiser(PartRecord):
    diffuse_max_accumulated_frame_num: int
    specular_max_accumulated_frame_num: int
    diffuse_prepass_blur_radius: float
    specular_prepass_blur_radius: float
    firefly_filter: bool

class ImageTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagIntensity(PartRecord):
    threshold_min: float
    threshold_max: float
    sigma_scale: float
    sensitivity_to_darkness: float
    enable: bool

class ImageTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagDistance(PartRecord):
    threshold_min: float
    threshold_max: float
    sigma_scale: float
    sensitivity_to_darkness: float
    enable: bool

class ImageTaskRealtimeGiIndirectLightDenoiser(PartRecord):
    max_accumulated_frame_num: int
    max_fast_accumulated_frame_num: int
    history_fix_frame_num: int
    diffuse_prepass_blur_radius: float
    specular_prepass_blur_radius: float
    blur_radius: float
    firefly_filter: bool
    reference_accumulation: bool
    performance_mode: bool
    indirect_light_denoiser_antilag_intensity: ImageTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagIntensity
    indirect_light_denoiser_antilag_distance: ImageTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagDistance

class ImageTaskRealtimeGiKernelDebug(PartRecord):
    flags: int
    launch_id: tuple[int, int]

class ImageTaskRealtimeGiLightPresampling(PartRecord):
    bucket_count: int
    bucket_size: int
    tile_size: int

class ImageTaskRealtimeGi(GroupRecord):
    max_bounces: int
    max_cutout_bounces: int
    max_indirect_bounces: int
    denoising: float
    taa: float
    motion_blur: float
    pass_filter: Literal['DISABLED', 'PRIMARY', 'FIRST_SECONDARY', 'LAST_SECONDARY', 'CLEARCOAT', 'INDIRECT'] | int
    debug_output_overlay: tuple[int, int, int, int]
    direct_light: ImageTaskRealtimeGiDirectLight
    indirect_light: ImageTaskRealtimeGiIndirectLight
    direct_light_denoiser: ImageTaskRealtimeGiDirectLightDenoiser
    indirect_light_denoiser: ImageTaskRealtimeGiIndirectLightDenoiser
    kernel_debug: ImageTaskRealtimeGiKernelDebug
    light_presampling: ImageTaskRealtimeGiLightPresampling
    denoiser: Literal['NRD_UPSCALER', 'NRD_TAA', 'DLSS', 'AUTO'] | int
    upscaling: Literal['NONE', 'QUALITY', 'BALANCED', 'PERFORMANCE', 'ULTRA_PERFORMANCE', 'AUTO'] | int
    artistic_sky_sampling_probability: float
    dlss_input_clamping: float

class ImageTaskRasterizerAmbientOcclusion(PartRecord):
    darkness: float
    edge_intensity: float
    edge_depth_threshold: float

class ImageTaskRasterizerMultisamplingAntialiasing(PartRecord):
    opaque: bool
    transparent: bool
    num_samples: int
    clamp_value: float

class ImageTaskRasterizerIblSamplingMode(PartRecord):
    progressive: bool
    samples: int

class ImageTaskRasterizerBackfaceHighlightingColor(PartRecord):
    red: float
    green: float
    blue: float
    alpha: float

class ImageTaskRasterizer(GroupRecord):
    visualization_mode: Literal['SCENE', 'VOXEL_GRID'] | int
    shadows: bool
    ambient_occlusion: ImageTaskRasterizerAmbientOcclusion
    multisampling_antialiasing: ImageTaskRasterizerMultisamplingAntialiasing
    fullscreen_antialiasing: bool
    ibl_sampling_mode: ImageTaskRasterizerIblSamplingMode
    backface_highlighting_color: ImageTaskRasterizerBackfaceHighlightingColor

class ImageTaskWhittedRaytracingIblSampling(PartRecord):
    progressive: bool
    samples: int

class ImageTaskWhittedRaytracing(GroupRecord):
    pixel_subsampling: int
    ray_contribution_threshold: float
    glossy_threshold: float
    max_bounces: int
    ibl_sampling: ImageTaskWhittedRaytracingIblSampling

class ImageTaskDiagnostic(GroupRecord):
    max_iterations: int

class BakeTaskGeneralCutPlanes(PartRecord):
    only_primary: bool
    render_caps: bool

class BakeTaskGeneral(GroupRecord):
    baking_offset: float
    cut_planes: BakeTaskGeneralCutPlanes

class BakeTaskAccumulationReconstructionGaussFilter(PartRecord):
    enable: bool
    alpha: float
    radius: float

class BakeTaskAccumulation(GroupRecord):
    reconstruction_gauss_filter: BakeTaskAccumulationReconstructionGaussFilter
    clamping_technique: Literal['LUMINANCE', 'EQUAL'] | int
    clamp_value: float
    clamp_multiplier: float
    brightness: float
    transparent_background: bool
    accumulation: bool
    base_seed: int

class BakeTaskRenderRegion(GroupRecord):
    left: float
    bottom: float
    width: float
    height: float

class BakeTaskGlobalIlluminationRussianRouletteTermination(PartRecord):
    scheme: Literal['FIXED', 'ADAPTIVE'] | int
    start_depth: int
    fixed_probability: float

class BakeTaskGlobalIlluminationLightImportanceSampling(PartRecord):
    importance_method: Literal['EQUAL', 'PROPORTIONAL'] | int
    meshlight_sampling_ratio: float

class BakeTaskGlobalIllumination(GroupRecord):
    pixel_subsampling: int
    russian_roulette_termination: BakeTaskGlobalIlluminationRussianRouletteTermination
    light_importance_sampling: BakeTaskGlobalIlluminationLightImportanceSampling
    glossy_threshold: float
    max_bounces: int
    glass_casts_shadows: bool
    caustic_paths: bool
    final_gathering: bool
    caustic_photons: bool
    lbis_sampling: bool

class BakeTaskPhotonMapsFinalGatherMap(PartRecord):
    num_started_photon_paths: int
    max_bounces: int
    radius: float
    recompute_photon_map: bool
    precompute_irradiance: bool

class BakeTaskPhotonMapsCausticMap(PartRecord):
    num_started_photon_paths: int
    max_bounces: int
    radius: float
    recompute_photon_map: bool
    precompute_irradiance: bool

class BakeTaskPhotonMaps(GroupRecord):
    final_gather_map: BakeTaskPhotonMapsFinalGatherMap
    caustic_map: BakeTaskPhotonMapsCausticMap
    visualization: Literal['NONE', 'CAUSTIC_MAP', 'PHOTON_MAP'] | int

class BakeTaskAmbientOcclusion(GroupRecord):
    num_samples: int
    tmax: float
    ignore_bumpmapping: bool

class BakeTaskWavefront(GroupRecord):
    max_bounces: int
    sample_IBL: bool
    light_tracing: bool
    lighttracing_visualisation: Literal['ALL', 'PATHTRACING', 'LIGHTTRACING', 'PHOTONMAPPING', 'PATHTRACING_MIS', 'LIGHTTRACING_MIS', 'PHOTONMAPPING_MIS', 'PT_MIS_PASS', 'LTPM_PASS'] | int
    sss_next_ee: bool
    photon_mapping: bool
    photon_radius: float
    refraction_in_alpha: bool
    glossy_photon_mapping: bool
    gloss_pdf: float
    rounded_edges: bool
    focused_light_particles: bool
    spectral_wavelength: float
    refraction_override: bool

class BakeTaskRealtimeGiDirectLight(PartRecord):
    num_meshlight_candidates: int
    num_virtuallight_candidates: int
    num_envlight_candidates: int
    num_bsdf_samples: int
    num_spatial_samples: int
    num_disocclusion_boost_samples: int
    spatial_radius: int
    history_length: int
    perturbation: float

class BakeTaskRealtimeGiIndirectLight(PartRecord):
    nee_meshlight_weight: float
    nee_virtuallight_weight: float
    nee_environment_weight: float
    num_spatial_samples: int
    spatial_radius: int
    history_length: int
    spatial_pw_mis: float
    temporal_pw_mis: float
    min_reconnect_distance: float
    min_reconnect_roughness: float
    max_resampling_pdf_change: float
    firefly_filter: float
    clamp_multiplier: float
    reprojection_radius: int

class BakeTaskRealtimeGiDirectLightDenoiser(PartRecord):
    diffuse_max_accumulated_frame_num: int
    specular_max_accumulated_frame_num: int
    diffuse_prepass_blur_radius: float
    specular_prepass_blur_radius: float
    firefly_filter: bool

class BakeTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagIntensity(PartRecord):
    threshold_min: float
    threshold_max: float
    sigma_scale: float
    sensitivity_to_darkness: float
    enable: bool

class BakeTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagDistance(PartRecord):
    threshold_min: float
    threshold_max: float
    sigma_scale: float
    sensitivity_to_darkness: float
    enable: bool

class BakeTaskRealtimeGiIndirectLightDenoiser(PartRecord):
    max_accumulated_frame_num: int
    max_fast_accumulated_frame_num: int
    history_fix_frame_num: int
    diffuse_prepass_blur_radius: float
    specular_prepass_blur_radius: float
    blur_radius: float
    firefly_filter: bool
    reference_accumulation: bool
    performance_mode: bool
    indirect_light_denoiser_antilag_intensity: BakeTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagIntensity
    indirect_light_denoiser_antilag_distance: BakeTaskRealtimeGiIndirectLightDenoiserIndirectLightDenoiserAntilagDistance

class BakeTaskRealtimeGiKernelDebug(PartRecord):
    flags: int
    launch_id: tuple[int, int]

class BakeTaskRealtimeGiLightPresampling(PartRecord):
    bucket_count: int
    bucket_size: int
    tile_size: int

class BakeTaskRealtimeGi(GroupRecord):
    max_bounces: int
    max_cutout_bounces: int
    max_indirect_bounces: int
    denoising: float
    taa: float
    motion_blur: float
    pass_filter: Literal['DISABLED', 'PRIMARY', 'FIRST_SECONDARY', 'LAST_SECONDARY', 'CLEARCOAT', 'INDIRECT'] | int
    debug_output_overlay: tuple[int, int, int, int]
    direct_light: BakeTaskRealtimeGiDirectLight
    indirect_light: BakeTaskRealtimeGiIndirectLight
    direct_light_denoiser: BakeTaskRealtimeGiDirectLightDenoiser
    indirect_light_denoiser: BakeTaskRealtimeGiIndirectLightDenoiser
    kernel_debug: BakeTaskRealtimeGiKernelDebug
    light_presampling: BakeTaskRealtimeGiLightPresampling
    denoiser: Literal['NRD_UPSCALER', 'NRD_TAA', 'DLSS', 'AUTO'] | int
    upscaling: Literal['NONE', 'QUALITY', 'BALANCED', 'PERFORMANCE', 'ULTRA_PERFORMANCE', 'AUTO'] | int
    artistic_sky_sampling_probability: float
    dlss_input_clamping: float

class BakeTaskRasterizerAmbientOcclusion(PartRecord):
    darkness: float
    edge_intensity: float
    edge_depth_threshold: float

class BakeTaskRasterizerMultisamplingAntialiasing(PartRecord):
    opaque: bool
    transparent: bool
    num_samples: int
    clamp_value: float

class BakeTaskRasterizerIblSamplingMode(PartRecord):
    progressive: bool
    samples: int

class BakeTaskRasterizerBackfaceHighlightingColor(PartRecord):
    red: float
    green: float
    blue: float
    alpha: float

class BakeTaskRasterizer(GroupRecord):
    visualization_mode: Literal['SCENE', 'VOXEL_GRID'] | int
    shadows: bool
    ambient_occlusion: BakeTaskRasterizerAmbientOcclusion
    multisampling_antialiasing: BakeTaskRasterizerMultisamplingAntialiasing
    fullscreen_antialiasing: bool
    ibl_sampling_mode: BakeTaskRasterizerIblSamplingMode
    backface_highlighting_color: BakeTaskRasterizerBackfaceHighlightingColor

class BakeTaskWhittedRaytracingIblSampling(PartRecord):
    progressive: bool
    samples: int

class BakeTaskWhittedRaytracing(GroupRecord):
    pixel_subsampling: int
    ray_contribution_threshold: float
    glossy_threshold: float
    max_bounces: int
    ibl_sampling: BakeTaskWhittedRaytracingIblSampling

class BakeTaskDiagnostic(GroupRecord):
    max_iterations: int

class CameraProgram(Program):
    ...

class MaterialProgram(Program):
    ...

class LightProgram(Program):
    ...

class Mesh(assets.Mesh):
    ...

class Texture(assets.Texture):
    ...

class MaterialGraph(assets.MaterialGraph):
    ...

class Keyframe(Instance):
    transformation: KeyframeTransformation

class KeyframeList(Instance):
    keyframes: ReferenceList

class Camera(Instance):
    transformation: CameraTransformation
    general: CameraGeneral
    background: CameraBackground
    backplate: CameraBackplate
    program: CameraProgram | None
    backplate_texture: Texture | None
    keyframes: KeyframeList | None
    value: Value | None

class TransformationGroup(Instance):
    transformation: TransformationGroupTransformation

class LightGroup(Instance):
    emitters: ReferenceList

class Light(Instance):
    transformation: LightTransformation
    general: LightGeneral
    target: LightTarget
    sampling_probability: LightSamplingProbability
    view_space: LightViewSpace
    visibility: LightVisibility
    program: LightProgram | None
    transformation_group: TransformationGroup | None
    textures: ReferenceList
    value: Value | None

class Material(Instance):
    program: MaterialProgram | None
    graph: MaterialGraph | None
    textures: ReferenceList
    value: Value | None

class Decal(Instance):
    transformation: DecalTransformation
    projection: DecalProjection
    front_material: Material | None
    back_material: Material | None
    transformation_group: TransformationGroup | None

class DecalList(Instance):
    decals: ReferenceList

class Shape(Instance):
    transformation: ShapeTransformation
    general: ShapeGeneral
    target: ShapeTarget
    ambient_occlusion: ShapeAmbientOcclusion
    cut_planes: ShapeCutPlanes
    face_culling: ShapeFaceCulling
    matte_objects: ShapeMatteObjects
    nested_priority: ShapeNestedPriority
    procedural_u_vs: ShapeProceduralUVs
    rasterizer: ShapeRasterizer
    hemilux: ShapeHemilux
    sampling_probability: ShapeSamplingProbability
    view_space: ShapeViewSpace
    visibility: ShapeVisibility
    material: Material | None
    mesh: Mesh | None
    light_group: LightGroup | None
    transformation_group: TransformationGroup | None
    decals: DecalList | None
    hemilux_texture: Texture | None
    hemilux_tonemapping: Texture | None
    filling_material: Material | None
    keyframes: KeyframeList | None

class ImageTask(Instance):
    general: ImageTaskGeneral
    accumulation: ImageTaskAccumulation
    render_region: ImageTaskRenderRegion
    global_illumination: ImageTaskGlobalIllumination
    photon_maps: ImageTaskPhotonMaps
    ambient_occlusion: ImageTaskAmbientOcclusion
    wavefront: ImageTaskWavefront
    realtime_gi: ImageTaskRealtimeGi
    rasterizer: ImageTaskRasterizer
    whitted_raytracing: ImageTaskWhittedRaytracing
    diagnostic: ImageTaskDiagnostic
    camera: Camera | None

class BakeTask(Instance):
    general: BakeTaskGeneral
    accumulation: BakeTaskAccumulation
    render_region: BakeTaskRenderRegion
    global_illumination: BakeTaskGlobalIllumination
    photon_maps: BakeTaskPhotonMaps
    ambient_occlusion: BakeTaskAmbientOcclusion
    wavefront: BakeTaskWavefront
    realtime_gi: BakeTaskRealtimeGi
    rasterizer: BakeTaskRasterizer
    whitted_raytracing: BakeTaskWhittedRaytracing
    diagnostic: BakeTaskDiagnostic
    shapes: ReferenceList

_CameraProgram = CameraProgram
_MaterialProgram = MaterialProgram
_LightProgram = LightProgram
_Mesh = Mesh
_Texture = Texture
_MaterialGraph = MaterialGraph
_Keyframe = Keyframe
_KeyframeList = KeyframeList
_Camera = Camera
_TransformationGroup = TransformationGroup
_LightGroup = LightGroup
_Light = Light
_Material = Material
_Decal = Decal
_DecalList = DecalList
_Shape = Shape
_ImageTask = ImageTask
_BakeTask = BakeTask

class SceneClasses:
    @property
    def CameraProgram(self) -> Objects[_CameraProgram]: ...
    @property
    def MaterialProgram(self) -> Objects[_MaterialProgram]: ...
    @property
    def LightProgram(self) -> Objects[_LightProgram]: ...
    @property
    def Mesh(self) -> Objects[_Mesh]: ...
    @property
    def Texture(self) -> Objects[_Texture]: ...
    @property
    def MaterialGraph(self) -> Objects[_MaterialGraph]: ...
    @property
    def Keyframe(self) -> Objects[_Keyframe]: ...
    @property
    def KeyframeList(self) -> Objects[_KeyframeList]: ...
    @property
    def Camera(self) -> Objects[_Camera]: ...
    @property
    def TransformationGroup(self) -> Objects[_TransformationGroup]: ...
    @property
    def LightGroup(self) -> Objects[_LightGroup]: ...
    @property
    def Light(self) -> Objects[_Light]: ...
    @property
    def Material(self) -> Objects[_Material]: ...
    @property
    def Decal(self) -> Objects[_Decal]: ...
    @property
    def DecalList(self) -> Objects[_DecalList]: ...
    @property
    def Shape(self) -> Objects[_Shape]: ...
    @property
    def ImageTask(self) -> Objects[_ImageTask]: ...
    @property
    def BakeTask(self) -> Objects[_BakeTask]: ...
