#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <new>
#include <type_traits>

namespace velamo {

struct ReferenceReleaser {
    void operator()(CFTypeRef object) const noexcept { CFRelease(object); }
};

/// A reference that is given back at the end of its scope.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReferenceReleaser>;

/// The reference; std::bad_alloc when it is null, as it is when memory lacks.
template <class Reference>
Reference required(Reference reference) {
    if (reference == nullptr) throw std::bad_alloc();
    return reference;
}

/// Takes over what a Create function gave; std::bad_alloc when that is null.
template <class Reference>
Owned<Reference> own(Reference reference) {
    return Owned<Reference>(required(reference));
}

}  // namespace velamo
