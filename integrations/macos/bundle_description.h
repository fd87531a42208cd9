#pragma once

#include <string>

#include "velamo/platform/plist/property_list.h"

namespace velamo {

/// What the importer's bundle says of itself in Contents/Info.plist: the types of designs, which macOS does not know,
/// the extensions by which it tells them, the factory that makes the importer, its version, and the oldest system that
/// it is for ("13.3"). May throw std::bad_alloc.
[[nodiscard]] PropertyList importerBundleProperties(const std::string& version, const std::string& system);

/// What Contents/Resources/schema.xml says of the attributes that the importer gives. May throw std::bad_alloc.
[[nodiscard]] std::string importerSchema();

}  // namespace velamo
