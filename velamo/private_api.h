#pragma once

/// Marks what velamo's own programs need of the library besides its public names. It may change or disappear in any
/// version. It therefore carries the version node VELAMO_PRIVATE, which no other program should link with.
#define VELAMO_PRIVATE_API __attribute__((visibility("default")))
