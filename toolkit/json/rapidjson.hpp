// RapidJSON, which reads the syntax of documents. Sizes have 64 bits, and its names are in a
// namespace of the toolkit's own, so that a host with another setting does not meet them.
#ifndef VORNATH_TOOLKIT_JSON_RAPIDJSON_HPP
#define VORNATH_TOOLKIT_JSON_RAPIDJSON_HPP

#include <cstddef>
#include <new>

#define RAPIDJSON_NAMESPACE vrtk::rapid
#define RAPIDJSON_NAMESPACE_BEGIN namespace vrtk::rapid {
#define RAPIDJSON_NAMESPACE_END }
#define RAPIDJSON_NO_SIZETYPEDEFINE
#define RAPIDJSON_HAS_STDSTRING 0

namespace vrtk::rapid {
using SizeType = std::size_t;
}

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wpedantic"
#endif
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif
