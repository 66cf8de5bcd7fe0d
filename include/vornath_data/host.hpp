/// The C++17 interface for hosts, a layer over the flat functions. It offers scenes with automatic
/// lifetime, access to fields by path, and assets that use a host's bytes without a copy. It is
/// header-only. Failures throw vrnt::Exception or std::bad_alloc and leak nothing.
///
///     using namespace vrnt;
///     host::Scene scene;
///     host::Object camera = scene.create(VRDM_CLASS_CAMERA);
///     scene.refer(camera, "program", scene.addProgram(VRDM_CLASS_CAMERA_PROGRAM, source));
///
///     host::Record general = scene.group(camera, "General");
///     scene.setGroup(camera, "General", general.set("near_distance", 0.5F));
///     scene.setValue(camera, host::Record::ofType("{ float focal_length; }"));
///     scene.write("camera.vrnscene");
///
/// Destroy all scenes, records, fields, types and values before you call vrntValuesShutdown().
#ifndef VORNATH_DATA_HOST_HPP
#define VORNATH_DATA_HOST_HPP

#include "vornath_data/host/field.hpp"
#include "vornath_data/host/record.hpp"
#include "vornath_data/host/scene.hpp"
#include "vornath_data/host/span.hpp"
#include "vornath_data/host/storage.hpp"
#include "vornath_data/vrnt.h"

#endif
