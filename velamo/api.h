#pragma once

/// Marks what the library offers to its callers. Everything else is hidden inside it, so that a name which a program
/// happens to share with the library's own code disturbs neither.
#define VELAMO_API __attribute__((visibility("default")))
