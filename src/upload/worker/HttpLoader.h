#pragma once

#include "upload/worker/Http.h"

#include <memory>
#include <string>
#include <vector>

namespace tavrine {

/// The module for HTTP, loaded at the first request. It lies in the program's own folder of plugins.
class HttpLoader {
public:
    HttpLoader();

    /// What must stay readable for HTTP to work: the module, the libraries, certificates, and how names are looked up.
    [[nodiscard]] std::vector<std::string> places() const;

    [[nodiscard]] bool isLoaded() const { return m_http != nullptr; }
    /// Null when the module is missing or cannot be loaded.
    [[nodiscard]] Http *get();

private:
    std::vector<std::string> m_folders; // where the module may lie
    std::unique_ptr<Http> m_http;
};

} // namespace tavrine
