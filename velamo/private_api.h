#pragma once

/// Before what velamo's own programs need of the library besides its public names. It may change or go with any
/// version, and so carries the version node VELAMO_PRIVATE, which nobody else is to link with.
#define VELAMO_PRIVATE_API __attribute__((visibility("default")))
