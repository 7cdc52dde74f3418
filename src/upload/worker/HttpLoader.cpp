#include "upload/worker/HttpLoader.h"

#include "walls/NetworkWalls.h"

#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

namespace tavrine {

HttpLoader::HttpLoader() {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::string folder = program.substr(0, program.rfind('/') + 1);
    // In the build tree, and where an installed program's libraries lie.
    for (const char *modules : {"../lib/tavrine", TAVRINE_INSTALLED_PLUGINS})
        m_folders.push_back(folder + modules);
}

std::vector<std::string> HttpLoader::places() const {
    std::vector<std::string> places = placesOfNetwork();
    places.insert(places.end(), m_folders.begin(), m_folders.end());
    return places;
}

Http *HttpLoader::get() {
    for (auto folder = m_folders.begin(); !m_http && folder != m_folders.end(); ++folder) {
        void *module = dlopen((*folder + "/" + httpModule).c_str(), RTLD_NOW | RTLD_LOCAL);
        void *make = module ? dlsym(module, makeHttpSymbol) : nullptr;
        if (make)
            m_http.reset(reinterpret_cast<MakeHttp *>(make)());
    }
    return m_http.get();
}

} // namespace tavrine
