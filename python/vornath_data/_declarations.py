"""The C declarations of vornath_data and vornath_toolkit for ctypes.

Written by scripts/write_python_declarations.py from the public headers; do not edit.
Handles and pointers to data are void pointers."""
# fmt: off
# mypy: ignore-errors
from ctypes import (CFUNCTYPE, Structure, c_bool, c_char, c_char_p, c_double, c_float, c_int32,
                    c_uint8, c_uint32, c_uint64, c_void_p)

vrntReadFn = CFUNCTYPE(None, c_void_p, c_uint64, c_void_p)
vrntWriteFn = CFUNCTYPE(None, c_void_p, c_uint64, c_void_p)
vrtkWriteFunction = CFUNCTYPE(c_uint32, c_void_p, c_uint64, c_void_p)


class vrntValue_t(Structure):
    _fields_ = [
        ("magic", c_char * 8),
        ("typeText", c_char_p),
        ("type", c_void_p),
        ("shadowRefs", c_void_p),
        ("freeFn", c_void_p),
        ("refCount", c_uint32),
        ("length", c_uint32),
    ]


class vrntValueView_t(Structure):
    _fields_ = [
        ("type", c_void_p),
        ("offset", c_uint64),
    ]


class vrntSpectrumRec(Structure):
    _fields_ = [
        ("encoding", c_uint32),
        ("count", c_int32),
        ("data", c_void_p),
    ]


class vrdmMeshDesc(Structure):
    _fields_ = [
        ("triangles", c_int32),
        ("vertices", c_int32),
        ("texcoordSets", c_int32),
        ("flags", c_uint32),
    ]


class vrdmTextureDesc(Structure):
    _fields_ = [
        ("width", c_int32),
        ("height", c_int32),
        ("depth", c_int32),
        ("format", c_int32),
        ("layout", c_int32),
    ]


class vrdmMaterialGraphDesc(Structure):
    _fields_ = [
        ("binarySize", c_uint64),
        ("rootOffset", c_uint64),
        ("parameterOffset", c_uint64),
    ]


class AssetStorage(Structure):
    _fields_ = [
        ("size", c_uint64),
        ("references", c_uint32),
        ("external", c_uint32),
        ("data", c_void_p),
        ("release", c_void_p),
    ]


class vrdmReferenceInfo(Structure):
    _fields_ = [
        ("kind", c_uint32),
        ("targetClass", c_uint32),
        ("name", c_char_p),
    ]


class vrntUniqueId_t(Structure):
    _fields_ = [
        ("bytes", c_uint8 * 16),
    ]


class vrtkTextPlace(Structure):
    _fields_ = [
        ("line", c_uint64),
        ("column", c_uint64),
        ("offset", c_uint64),
    ]


class vrtkCatalogueChange(Structure):
    _fields_ = [
        ("code", c_char_p),
        ("breaking", c_bool),
        ("address", c_char_p),
        ("message", c_char_p),
    ]


class vrtkLimits(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("maxMemory", c_uint64),
        ("maxMessages", c_uint64),
    ]


class vrtkMessage(Structure):
    _fields_ = [
        ("code", c_char_p),
        ("severity", c_uint32),
        ("offset", c_uint64),
        ("address", c_char_p),
        ("message", c_char_p),
    ]


class vrtkInfo(Structure):
    _fields_ = [
        ("id", c_uint8 * 16),
        ("version", c_uint32),
        ("size", c_uint64),
        ("assetBytes", c_uint64),
        ("valueBytes", c_uint64),
        ("valueBlocks", c_uint64),
        ("openMemory", c_uint64),
    ]


class vrtkClassInfo(Structure):
    _fields_ = [
        ("slots", c_uint32),
        ("live", c_uint32),
    ]


class vrtkGroupPlace(Structure):
    _fields_ = [
        ("scene", c_void_p),
        ("value", c_void_p),
        ("objectClass", c_uint32),
        ("index", c_int32),
        ("group", c_uint32),
    ]


class vrtkDiffOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("relative", c_double),
        ("absolute", c_double),
        ("maxEntries", c_uint64),
        ("includeIds", c_uint32),
    ]


class vrtkDiffEntry(Structure):
    _fields_ = [
        ("address", c_char_p),
        ("kind", c_uint32),
        ("oldText", c_char_p),
        ("newText", c_char_p),
    ]


class vrtkDigestOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("includeIds", c_uint32),
    ]


class vrtkExportOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("full", c_uint32),
        ("inlineAssets", c_uint32),
        ("assetFolder", c_char_p),
        ("assetPrefix", c_char_p),
    ]


class vrtkJsonMessage(Structure):
    _fields_ = [
        ("code", c_char_p),
        ("line", c_uint64),
        ("column", c_uint64),
        ("offset", c_uint64),
        ("pointer", c_char_p),
        ("message", c_char_p),
    ]


class vrtkBuildOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("assetFolder", c_char_p),
        ("maxMemory", c_uint64),
        ("maxMessages", c_uint64),
    ]


class vrtkSetOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("enforceLimits", c_uint32),
        ("assetFolder", c_char_p),
    ]


class vrtkSaveOptions(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("skipSync", c_uint32),
    ]


class vrtkBounds(Structure):
    _fields_ = [
        ("structSize", c_uint64),
        ("defaultValue", c_void_p),
        ("min", c_void_p),
        ("max", c_void_p),
        ("softMin", c_void_p),
        ("softMax", c_void_p),
    ]


class vrtkOutside(Structure):
    _fields_ = [
        ("path", c_char_p),
        ("offset", c_uint64),
        ("message", c_char_p),
    ]


class vrtkEnumChoice(Structure):
    _fields_ = [
        ("code", c_uint32),
        ("label", c_char_p),
        ("name", c_char_p),
        ("description", c_char_p),
        ("fields", c_char_p),
    ]


CONSTANTS = {
    "VRNT_LIBRARY_ERROR": 0,
    "VRNT_OUT_OF_MEMORY": 1,
    "VRNT_OTHER_ERROR": 2,
    "VRNT_BASETYPE_CHAR": 0,
    "VRNT_BASETYPE_HALF": 1,
    "VRNT_BASETYPE_BOOL": 2,
    "VRNT_BASETYPE_INT": 3,
    "VRNT_BASETYPE_FLOAT": 4,
    "VRNT_BASETYPE_STRUCT": 5,
    "VRNT_DESCRIPTOR_BASE": 0,
    "VRNT_DESCRIPTOR_STRUCT": 1,
    "VRNT_DESCRIPTOR_ARRAY": 2,
    "VRNT_DESCRIPTOR_REFERENCE": 3,
    "VRNT_DESCRIPTOR_ENUM": 4,
    "VRNT_DESCRIPTOR_FUNCTION": 5,
    "VRNT_STRING_EXACT": 1,
    "VRNT_STRING_MULTILINE": 4,
    "VRNT_ENCODING_LUMINANCE": 0,
    "VRNT_ENCODING_RGB": 1,
    "VRNT_ENCODING_SPECTRAL": 2,
    "VRNT_COLOUR_SPACE_E": 0,
    "VRNT_COLOUR_SPACE_D65": 1,
    "VRNT_LIGHT_UNIT_LUMEN": 0,
    "VRNT_LIGHT_UNIT_CANDELA": 1,
    "VRNT_LIGHT_UNIT_LUX": 2,
    "VRNT_LIGHT_UNIT_NIT": 3,
    "VRNT_METADATA_FLAG": 0,
    "VRNT_METADATA_TEXT": 1,
    "VRNT_METADATA_VALUE": 2,
    "VRNT_WRAP_MODE_CLAMP": 0,
    "VRNT_WRAP_MODE_BORDER": 1,
    "VRNT_WRAP_MODE_REPEAT": 2,
    "VRNT_WRAP_MODE_MIRROR": 3,
    "VRNT_MATERIAL_PARAM_COLOUR": 0,
    "VRNT_MATERIAL_PARAM_FLOAT": 1,
    "VRNT_MATERIAL_PARAM_NORMAL": 2,
    "VRNT_MATERIAL_PARAM_SIMPLE_COLOUR": 3,
    "VRNT_MATERIAL_PARAM_SIMPLE_FLOAT": 4,
    "VRNT_MATERIAL_PARAM_SIMPLE_NORMAL": 5,
    "VRNT_SAMPLER_SPECTRUM": 0,
    "VRNT_SAMPLER_NORMAL": 1,
    "VRNT_SAMPLER_FLOAT": 2,
    "VRNT_SAMPLER_SPECTRUM_SPHERE": 3,
    "VRNT_TEXTURE_FORMAT_SL8": 0,
    "VRNT_TEXTURE_FORMAT_SLA8": 1,
    "VRNT_TEXTURE_FORMAT_SRGB8": 2,
    "VRNT_TEXTURE_FORMAT_SRGBA8": 3,
    "VRNT_TEXTURE_FORMAT_H8": 4,
    "VRNT_TEXTURE_FORMAT_N8": 6,
    "VRNT_TEXTURE_FORMAT_NH8": 7,
    "VRNT_TEXTURE_FORMAT_X8": 8,
    "VRNT_TEXTURE_FORMAT_XY8": 9,
    "VRNT_TEXTURE_FORMAT_XYZ8": 10,
    "VRNT_TEXTURE_FORMAT_XYZW8": 11,
    "VRNT_TEXTURE_FORMAT_L16": 12,
    "VRNT_TEXTURE_FORMAT_LA16": 13,
    "VRNT_TEXTURE_FORMAT_RGB16": 14,
    "VRNT_TEXTURE_FORMAT_RGBA16": 15,
    "VRNT_TEXTURE_FORMAT_H16": 16,
    "VRNT_TEXTURE_FORMAT_N16": 18,
    "VRNT_TEXTURE_FORMAT_NH16": 19,
    "VRNT_TEXTURE_FORMAT_X16": 20,
    "VRNT_TEXTURE_FORMAT_XY16": 21,
    "VRNT_TEXTURE_FORMAT_XYZ16": 22,
    "VRNT_TEXTURE_FORMAT_XYZW16": 23,
    "VRNT_TEXTURE_FORMAT_L32": 24,
    "VRNT_TEXTURE_FORMAT_LA32": 25,
    "VRNT_TEXTURE_FORMAT_RGB32": 26,
    "VRNT_TEXTURE_FORMAT_RGBA32": 27,
    "VRNT_TEXTURE_FORMAT_H32": 28,
    "VRNT_TEXTURE_FORMAT_N32": 30,
    "VRNT_TEXTURE_FORMAT_NH32": 31,
    "VRNT_TEXTURE_FORMAT_X32": 32,
    "VRNT_TEXTURE_FORMAT_XY32": 33,
    "VRNT_TEXTURE_FORMAT_XYZ32": 34,
    "VRNT_TEXTURE_FORMAT_XYZW32": 35,
    "VRNT_TEXTURE_FORMAT_BC1": 67,
    "VRNT_TEXTURE_FORMAT_BC2": 71,
    "VRNT_TEXTURE_FORMAT_BC3": 75,
    "VRNT_TEXTURE_FORMAT_BC4": 76,
    "VRNT_TEXTURE_FORMAT_BC5": 77,
    "VRNT_TEXTURE_FORMAT_BC5N": 78,
    "VRNT_TEXTURE_FORMAT_BC6H": 82,
    "VRNT_TEXTURE_FORMAT_BC7": 83,
    "VRNT_TEXTURE_FORMAT_BC1N": 86,
    "VRNT_TEXTURE_FORMAT_BC1U": 87,
    "VRNT_TEXTURE_FORMAT_BC2N": 90,
    "VRNT_TEXTURE_FORMAT_BC2U": 91,
    "VRNT_TEXTURE_FORMAT_BC3N": 94,
    "VRNT_TEXTURE_FORMAT_BC3U": 95,
    "VRNT_TEXTURE_LAYOUT_2D": 0,
    "VRNT_TEXTURE_LAYOUT_LAT_LONG": 1,
    "VRNT_TEXTURE_LAYOUT_CUBE": 2,
    "VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX": 16385,
    "VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX": 16386,
    "VRNT_TEXTURE_LAYOUT_2D_MIPMAP": 32768,
    "VRNT_TEXTURE_LAYOUT_LAT_LONG_MIPMAP": 32769,
    "VRNT_TEXTURE_LAYOUT_CUBE_MIPMAP": 32770,
    "VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX_MIPMAP": 49153,
    "VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX_MIPMAP": 49154,
    "VRNT_TEXTURE_LAYOUT_2D_SPECTRAL": 65536,
    "VRNT_TEXTURE_LAYOUT_2D_ARRAY": 131072,
    "VRNT_TEXTURE_LAYOUT_2D_ARRAY_MIPMAP": 163840,
    "VRNT_TEXTURE_TYPE_SPECTRUM": 0,
    "VRNT_TEXTURE_TYPE_SPHERE": 1,
    "VRNT_TEXTURE_TYPE_NORMAL": 2,
    "VRNT_TEXTURE_TYPE_DATA": 3,
    "VRNT_TEXTURE_TYPE_SPHERE_DATA": 4,
    "VRDM_CLASS_CAMERA_PROGRAM": 0,
    "VRDM_CLASS_MATERIAL_PROGRAM": 1,
    "VRDM_CLASS_LIGHT_PROGRAM": 2,
    "VRDM_CLASS_MESH": 3,
    "VRDM_CLASS_TEXTURE": 4,
    "VRDM_CLASS_MATERIAL_GRAPH": 5,
    "VRDM_CLASS_KEYFRAME": 6,
    "VRDM_CLASS_KEYFRAME_LIST": 7,
    "VRDM_CLASS_CAMERA": 8,
    "VRDM_CLASS_TRANSFORMATION_GROUP": 9,
    "VRDM_CLASS_LIGHT_GROUP": 10,
    "VRDM_CLASS_LIGHT": 11,
    "VRDM_CLASS_MATERIAL": 12,
    "VRDM_CLASS_DECAL": 13,
    "VRDM_CLASS_DECAL_LIST": 14,
    "VRDM_CLASS_SHAPE": 15,
    "VRDM_CLASS_IMAGE_TASK": 16,
    "VRDM_CLASS_BAKE_TASK": 17,
    "VRDM_KIND_PROGRAM": 0,
    "VRDM_KIND_ASSET": 1,
    "VRDM_KIND_INSTANCE": 2,
    "VRDM_REFERENCE_REQUIRED": 0,
    "VRDM_REFERENCE_OPTIONAL": 1,
    "VRDM_REFERENCE_LIST": 2,
    "VRDM_REFERENCE_ORDERED_DECAL": 3,
    "VRDM_REFERENCE_EMITTER": 100,
    "VRDM_TARGET_EMITTER": 100,
    "VRTK_OK": 0,
    "VRTK_INVALID_ARGUMENT": 1,
    "VRTK_OUT_OF_MEMORY": 2,
    "VRTK_LIBRARY_ERROR": 3,
    "VRTK_INTERNAL_ERROR": 4,
    "VRTK_FILE_MISSING": 10,
    "VRTK_FILE_UNREADABLE": 11,
    "VRTK_FILE_IS_FOLDER": 12,
    "VRTK_FILE_NOT_REGULAR": 13,
    "VRTK_FILE_NO_SCENE": 14,
    "VRTK_FILE_VERSION": 15,
    "VRTK_FILE_DAMAGED": 16,
    "VRTK_FILE_TOO_LARGE": 17,
    "VRTK_FILE_CHANGED": 18,
    "VRTK_SAVE_NO_FOLDER": 30,
    "VRTK_SAVE_DENIED": 31,
    "VRTK_SAVE_NO_SPACE": 32,
    "VRTK_SAVE_FAILED": 33,
    "VRTK_SCENE_INCOMPLETE": 40,
    "VRTK_CATALOGUE_UNKNOWN": 60,
    "VRTK_CATALOGUE_INVALID": 61,
    "VRTK_JSON_INVALID": 50,
    "VRTK_ADDRESS_UNKNOWN": 51,
    "VRTK_PATCH_FAILED": 52,
    "VRTK_WRITE_STOPPED": 53,
    "VRTK_VALUE_CYCLE": 54,
    "VRTK_TEXT_INVALID": 70,
    "VRTK_VALUE_TYPE": 71,
    "VRTK_CATALOGUE_TEXT": 0,
    "VRTK_CATALOGUE_JSON": 1,
    "VRTK_CATALOGUE_SCHEMA": 2,
    "VRTK_CATALOGUE_HTML": 3,
    "VRTK_CATALOGUE_MARKDOWN": 4,
    "VRTK_WARNING": 0,
    "VRTK_ERROR": 1,
    "VRTK_DIFF_CHANGED": 0,
    "VRTK_DIFF_REMOVED": 1,
    "VRTK_DIFF_ADDED": 2,
    "VRTK_DESCRIPTION_TEXT": 0,
    "VRTK_DESCRIPTION_JSON": 1,
    "VORNATH_DATA_VERSION_MAJOR": 1,
    "VORNATH_DATA_VERSION_MINOR": 0,
    "VORNATH_DATA_VERSION_PATCH": 0,
    "VORNATH_TOOLKIT_VERSION_MAJOR": 1,
    "VORNATH_TOOLKIT_VERSION_MINOR": 0,
    "VORNATH_TOOLKIT_VERSION_PATCH": 0,
    "VRTK_NO_OFFSET": 18446744073709551615,
    "VRTK_DIGEST_LENGTH": 65,
    "VRTK_JSON_NO_OFFSET": 18446744073709551615,
    "VRDM_CLASS_SCENE_DATA": 4294967295,
}

# A function's name, the type of its result, and those of its arguments.
FUNCTIONS = {
    "vrdmAddAsset": (c_uint32, (c_void_p, c_uint32, c_void_p, c_void_p,)),
    "vrdmAddProgram": (c_uint32, (c_void_p, c_uint32, c_char_p,)),
    "vrdmContainerSize": (c_uint32, (c_void_p, c_uint32,)),
    "vrdmCountReferences": (c_uint32, (c_void_p, c_uint32, c_int32,)),
    "vrdmCreateInstance": (c_uint32, (c_void_p, c_uint32,)),
    "vrdmCreateScene": (c_void_p, ()),
    "vrdmDeserialize": (c_void_p, (c_char_p,)),
    "vrdmDestroyScene": (None, (c_void_p,)),
    "vrdmFieldCount": (c_uint32, (c_uint32,)),
    "vrdmFieldName": (c_char_p, (c_uint32, c_uint32,)),
    "vrdmFieldType": (c_void_p, (c_uint32, c_uint32,)),
    "vrdmGetAssetStorage": (c_void_p, (c_void_p, c_uint32, c_int32, c_void_p,)),
    "vrdmGetDataValue": (c_void_p, (c_void_p, c_uint32, c_int32, c_uint32,)),
    "vrdmGetInstanceValue": (c_void_p, (c_void_p, c_uint32, c_int32,)),
    "vrdmGetProgramSource": (c_char_p, (c_void_p, c_uint32, c_int32,)),
    "vrdmGetReference": (c_int32, (c_void_p, c_uint32, c_int32, c_uint32,)),
    "vrdmGetReferenceCount": (c_int32, (c_void_p, c_uint32, c_int32, c_uint32,)),
    "vrdmGetReferenceList": (c_void_p, (c_void_p, c_uint32, c_int32, c_uint32,)),
    "vrdmGetSceneDataValue": (c_void_p, (c_void_p, c_uint32,)),
    "vrdmGetUniqueId": (c_void_p, (c_void_p, c_uint32, c_int32,)),
    "vrdmHasValue": (c_bool, (c_uint32,)),
    "vrdmModifyReferenceList": (c_void_p, (c_void_p, c_uint32, c_int32, c_uint32,)),
    "vrdmObjectClass": (c_uint32, (c_uint32,)),
    "vrdmObjectName": (c_char_p, (c_uint32,)),
    "vrdmObjectTypeCount": (c_uint32, ()),
    "vrdmReferenceCount": (c_uint32, (c_uint32,)),
    "vrdmReferenceType": (vrdmReferenceInfo, (c_uint32, c_uint32,)),
    "vrdmRemove": (c_bool, (c_void_p, c_uint32, c_int32,)),
    "vrdmSceneId": (c_void_p, (c_void_p,)),
    "vrdmSerialize": (None, (c_void_p, c_char_p,)),
    "vrdmSetDataValue": (c_bool, (c_void_p, c_uint32, c_int32, c_uint32, c_void_p,)),
    "vrdmSetInstanceValue": (c_bool, (c_void_p, c_uint32, c_int32, c_void_p,)),
    "vrdmSetReference": (c_bool, (c_void_p, c_uint32, c_int32, c_uint32, c_uint32,)),
    "vrdmSetReferenceCount": (c_bool, (c_void_p, c_uint32, c_int32, c_uint32, c_uint32,)),
    "vrdmSetSceneDataValue": (c_bool, (c_void_p, c_uint32, c_void_p,)),
    "vrdmUpdateAsset": (c_bool, (c_void_p, c_uint32, c_int32, c_void_p, c_void_p,)),
    "vrdmUpdateTextureReferences": (None, (c_void_p, c_uint32, c_int32,)),
    "vrdmValid": (c_bool, (c_void_p, c_uint32, c_int32,)),
    "vrntBlackbodyToRGB": (None, (c_void_p, c_float,)),
    "vrntBuildSpecializationParameters": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntCoerce": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntDestroyString": (None, (c_void_p,)),
    "vrntMetadataExists": (c_uint32, (c_void_p, c_char_p,)),
    "vrntMetadataName": (c_char_p, (c_void_p, c_uint32,)),
    "vrntMetadataSize": (c_uint32, (c_void_p,)),
    "vrntMetadataString": (c_char_p, (c_void_p, c_char_p,)),
    "vrntMetadataType": (c_uint32, (c_void_p, c_char_p,)),
    "vrntMetadataValue": (c_void_p, (c_void_p, c_char_p,)),
    "vrntPlancksLaw": (c_float, (c_float, c_float,)),
    "vrntSpectrumConvert": (None, (c_void_p, c_void_p, c_int32,)),
    "vrntTypeAlignment": (c_uint64, (c_void_p,)),
    "vrntTypeArrayDimension": (c_uint32, (c_void_p,)),
    "vrntTypeArrayShape": (None, (c_void_p, c_void_p,)),
    "vrntTypeBasetype": (c_uint32, (c_void_p,)),
    "vrntTypeCheckSubType": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntTypeConstructorCount": (c_uint32, (c_void_p,)),
    "vrntTypeConstructorName": (c_char_p, (c_void_p, c_uint32,)),
    "vrntTypeCopy": (c_void_p, (c_void_p,)),
    "vrntTypeDescriptor": (c_uint32, (c_void_p,)),
    "vrntTypeDestroy": (None, (c_void_p,)),
    "vrntTypeElementType": (c_void_p, (c_void_p,)),
    "vrntTypeEmission": (c_void_p, ()),
    "vrntTypeFieldCount": (c_uint32, (c_void_p,)),
    "vrntTypeFieldLabel": (c_char_p, (c_void_p, c_uint32,)),
    "vrntTypeFieldType": (c_void_p, (c_void_p, c_uint32,)),
    "vrntTypeIsEqual": (c_int32, (c_void_p, c_void_p,)),
    "vrntTypeIsSubType": (c_int32, (c_void_p, c_void_p,)),
    "vrntTypeLightUnit": (c_void_p, ()),
    "vrntTypeMaterialParam": (c_void_p, (c_uint32,)),
    "vrntTypeMaterialParamType": (c_int32, (c_void_p,)),
    "vrntTypeParse": (c_void_p, (c_char_p, c_void_p,)),
    "vrntTypeReferencedType": (c_void_p, (c_void_p,)),
    "vrntTypeSampler": (c_void_p, (c_uint32,)),
    "vrntTypeSamplerType": (c_int32, (c_void_p,)),
    "vrntTypeSize": (c_uint64, (c_void_p,)),
    "vrntTypeSpectrum": (c_void_p, ()),
    "vrntTypeString": (c_char_p, (c_void_p,)),
    "vrntTypeStripMetadata": (c_void_p, (c_void_p,)),
    "vrntTypeTexture": (c_void_p, ()),
    "vrntTypeToUniversalSpectrum": (c_void_p, (c_void_p,)),
    "vrntTypeUVTransformation": (c_void_p, ()),
    "vrntTypeVectorDimension": (c_uint32, (c_void_p,)),
    "vrntTypeWrapmode": (c_void_p, ()),
    "vrntValueArrayElement": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntValueBinary": (c_void_p, (c_void_p,)),
    "vrntValueCopy": (c_void_p, (c_void_p,)),
    "vrntValueCreate": (c_void_p, (c_void_p, c_void_p,)),
    "vrntValueCreateDefault": (c_void_p, (c_void_p, c_void_p,)),
    "vrntValueData": (c_void_p, (c_void_p,)),
    "vrntValueDereference": (c_void_p, (c_void_p, c_void_p,)),
    "vrntValueDeserialize": (c_void_p, (vrntReadFn, c_void_p, c_void_p,)),
    "vrntValueDestroy": (None, (c_void_p,)),
    "vrntValueEqual": (c_int32, (c_void_p, c_void_p, c_void_p, c_void_p, c_float, c_void_p,)),
    "vrntValueFromView": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntValueMap": (c_void_p, (c_void_p, c_void_p, c_void_p,)),
    "vrntValueParse": (c_void_p, (c_void_p, c_void_p,)),
    "vrntValueSerialize": (None, (c_void_p, vrntWriteFn, c_void_p, c_void_p,)),
    "vrntValueSetReference": (None, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrntValueString": (c_void_p, (c_void_p, c_void_p, c_uint32, c_void_p,)),
    "vrntValueStructField": (c_void_p, (c_void_p, c_void_p, c_uint32,)),
    "vrntValueToRGB": (c_int32, (c_void_p, c_void_p, c_int32, c_void_p,)),
    "vrntValueToSPD": (c_int32, (c_void_p, c_void_p, c_int32, c_void_p,)),
    "vrntValueType": (c_void_p, (c_void_p,)),
    "vrntValueUnmap": (None, (c_void_p, c_void_p,)),
    "vrntValueWrite": (None, (c_void_p, c_uint64, c_void_p, c_uint64, c_void_p,)),
    "vrntValuesErrorCode": (c_uint32, (c_void_p,)),
    "vrntValuesErrorDestroy": (None, (c_void_p,)),
    "vrntValuesErrorMessage": (c_char_p, (c_void_p,)),
    "vrntValuesShutdown": (None, ()),
    "vrtkBoundsRelease": (None, (c_void_p,)),
    "vrtkBytesDestroy": (None, (c_void_p,)),
    "vrtkCatalogue": (c_uint32, (c_uint32, c_char_p, c_void_p, c_void_p,)),
    "vrtkCatalogueChangesBreaking": (c_uint64, (c_void_p,)),
    "vrtkCatalogueChangesCount": (c_uint64, (c_void_p,)),
    "vrtkCatalogueChangesDestroy": (None, (c_void_p,)),
    "vrtkCatalogueChangesGet": (c_void_p, (c_void_p, c_uint64,)),
    "vrtkCatalogueChangesJson": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkCatalogueCompare": (c_uint32, (c_char_p, c_uint64, c_void_p, c_void_p,)),
    "vrtkCheckBytes": (c_uint32, (c_void_p, c_uint64, c_void_p, c_void_p, c_void_p,)),
    "vrtkCheckCode": (c_char_p, (c_uint32,)),
    "vrtkCheckCodeCount": (c_uint32, ()),
    "vrtkCheckCodeSeverity": (c_uint32, (c_uint32,)),
    "vrtkCheckFile": (c_uint32, (c_char_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkDiffCount": (c_uint64, (c_void_p,)),
    "vrtkDiffDestroy": (None, (c_void_p,)),
    "vrtkDiffEntryAt": (c_void_p, (c_void_p, c_uint64,)),
    "vrtkDiffFound": (c_uint64, (c_void_p,)),
    "vrtkDiffJson": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkDiffKindName": (c_char_p, (c_uint32,)),
    "vrtkEnumChoiceAt": (c_void_p, (c_void_p, c_uint32,)),
    "vrtkEnumChoiceCount": (c_uint32, (c_void_p,)),
    "vrtkEnumChoicesDestroy": (None, (c_void_p,)),
    "vrtkEnumChoicesOf": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkErrorCode": (c_uint32, (c_void_p,)),
    "vrtkErrorDestroy": (None, (c_void_p,)),
    "vrtkErrorMessage": (c_char_p, (c_void_p,)),
    "vrtkErrorPlace": (c_bool, (c_void_p, c_void_p,)),
    "vrtkFileSave": (c_uint32, (c_void_p, c_uint64, c_char_p, c_void_p, c_void_p,)),
    "vrtkJsonReportCount": (c_uint64, (c_void_p,)),
    "vrtkJsonReportDestroy": (None, (c_void_p,)),
    "vrtkJsonReportJson": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkJsonReportMessage": (c_void_p, (c_void_p, c_uint64,)),
    "vrtkJsonReportTruncated": (c_bool, (c_void_p,)),
    "vrtkOpenFile": (c_uint32, (c_char_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkOutsideAt": (c_void_p, (c_void_p, c_uint64,)),
    "vrtkOutsideCount": (c_uint64, (c_void_p,)),
    "vrtkOutsideListDestroy": (None, (c_void_p,)),
    "vrtkRenumberingDestroy": (None, (c_void_p,)),
    "vrtkRenumberingJson": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkRenumberingSlots": (c_void_p, (c_void_p, c_uint32, c_void_p,)),
    "vrtkReportClass": (vrtkClassInfo, (c_void_p, c_uint32,)),
    "vrtkReportDestroy": (None, (c_void_p,)),
    "vrtkReportErrorCount": (c_uint64, (c_void_p,)),
    "vrtkReportInfo": (c_void_p, (c_void_p,)),
    "vrtkReportJson": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkReportMessage": (c_void_p, (c_void_p, c_uint64,)),
    "vrtkReportMessageCount": (c_uint64, (c_void_p,)),
    "vrtkReportTruncated": (c_bool, (c_void_p,)),
    "vrtkReportValid": (c_bool, (c_void_p,)),
    "vrtkReportWarningCount": (c_uint64, (c_void_p,)),
    "vrtkSceneBuild": (c_uint32, (c_char_p, c_uint64, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneBuildFile": (c_uint32, (c_char_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneColumnGet": (c_uint32, (c_void_p, c_uint32, c_uint32, c_uint64, c_uint64, c_void_p, c_uint64, c_void_p, c_uint64, c_void_p,)),
    "vrtkSceneColumnSet": (c_uint32, (c_void_p, c_uint32, c_uint32, c_uint64, c_uint64, c_void_p, c_uint64, c_void_p, c_uint64, c_void_p,)),
    "vrtkSceneDiff": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneDiffPatch": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneDigest": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneDump": (c_uint32, (c_void_p, vrtkWriteFunction, c_void_p, c_void_p,)),
    "vrtkSceneEquivalent": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneExport": (c_uint32, (c_void_p, c_void_p, vrtkWriteFunction, c_void_p, c_void_p,)),
    "vrtkSceneExportFile": (c_uint32, (c_void_p, c_char_p, c_void_p, c_void_p,)),
    "vrtkSceneExportString": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneGet": (c_uint32, (c_void_p, c_char_p, c_void_p, c_void_p,)),
    "vrtkSceneGetBytes": (c_uint32, (c_void_p, c_char_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneGroupSet": (c_uint32, (c_void_p,)),
    "vrtkSceneImport": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneLiveSlots": (c_uint32, (c_void_p, c_uint32, c_void_p, c_uint64, c_void_p, c_void_p,)),
    "vrtkSceneOpen": (c_uint32, (c_char_p, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneOpenBytes": (c_uint32, (c_void_p, c_uint64, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkScenePatch": (c_uint32, (c_void_p, c_char_p, c_uint64, c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneSave": (c_uint32, (c_void_p, c_char_p, c_void_p, c_void_p,)),
    "vrtkSceneSaveBytes": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkSceneSet": (c_uint32, (c_void_p, c_char_p, c_char_p, c_void_p, c_void_p,)),
    "vrtkSceneValidate": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkStatusName": (c_char_p, (c_uint32,)),
    "vrtkStorageRelease": (None, (c_void_p,)),
    "vrtkStorageRetain": (c_void_p, (c_void_p,)),
    "vrtkStringDestroy": (None, (c_void_p,)),
    "vrtkTypeDescribe": (c_uint32, (c_void_p, c_uint32, c_void_p, c_void_p,)),
    "vrtkTypeParse": (c_uint32, (c_char_p, c_void_p, c_void_p,)),
    "vrtkValueBounds": (c_uint32, (c_void_p, c_void_p, c_void_p,)),
    "vrtkValueCheck": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkValueClamp": (c_uint32, (c_void_p, c_void_p, c_void_p, c_void_p,)),
    "vrtkValueCoerce": (c_uint32, (c_void_p, c_void_p, c_uint32, c_void_p, c_void_p,)),
    "vrtkValueDescribe": (c_uint32, (c_void_p, c_void_p, c_uint32, c_void_p, c_void_p,)),
    "vrtkValueParse": (c_uint32, (c_char_p, c_void_p, c_void_p,)),
    "vrtkValueParseAs": (c_uint32, (c_void_p, c_char_p, c_void_p, c_void_p,)),
    "vrtkVersion": (c_char_p, ()),
    "vrtnTypeFloatArray": (c_void_p, (c_uint64,)),
}
