#pragma once

/// Before what the library offers to its callers. All else stays inside it: a name that a program happens to share with
/// the library's own code cannot disturb either.
#define VELAMO_API __attribute__((visibility("default")))
