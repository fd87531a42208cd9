#include "velamo/platform/system/shared_module.h"

#include <dlfcn.h>

#include <stdexcept>
#include <system_error>

namespace velamo {
namespace {

/// The loader would look for a bare name in the system's folders.
void* load(const std::filesystem::path& path) {
    return dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

SharedModule::SharedModule(const std::filesystem::path& path) : handle_(load(path)) {
    if (handle_ != nullptr) return;
    const char* why = dlerror();
    throw std::runtime_error(why != nullptr ? why : "cannot load " + path.string());
}

void* SharedModule::symbol(const char* name) const noexcept {
    return dlsym(handle_, name);
}

std::filesystem::path pathOfThisModule() {
    static const char insideThisModule = 0;
    Dl_info info{};
    std::error_code error;
    if (dladdr(&insideThisModule, &info) != 0 && info.dli_fname != nullptr) {
        const std::filesystem::path module = info.dli_fname;
        auto canonical = module.has_parent_path() ? std::filesystem::canonical(module, error) : "";
        if (!error && !canonical.empty()) return canonical;
    }
    // A program found through PATH is known to the loader by its bare name alone.
    return std::filesystem::canonical("/proc/self/exe", error);
}

}  // namespace velamo
