// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/FileURL.h>

#include <glib.h>

#include <memory>
#include <system_error>
#include <utility>

namespace vorlan {

namespace {

struct Release {
    void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, Release>;

std::filesystem::path fromRoot(std::filesystem::path path) {
    if (path.is_absolute()) return path;
    std::error_code failed; // there is no working directory any more: the root is as good as any
    auto folder = std::filesystem::current_path(failed);
    return (failed ? std::filesystem::path("/") : std::move(folder)) / path;
}

// Without slashes at the end, so that the last component is the last one that has a name.
std::string trimmed(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

} // namespace

FileURL::FileURL(std::filesystem::path path) : path_(trimmed(fromRoot(std::move(path)).native())) {}

std::optional<FileURL> FileURL::fromDescription(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    char* host = nullptr;
    const GText path(g_filename_from_uri(std::string(text).c_str(), &host, nullptr));
    const GText owner(host);
    if (!path || (host != nullptr && std::string_view(host) != "localhost")) return std::nullopt;
    return FileURL(std::filesystem::path(path.get()));
}

FileURL FileURL::appendingPathComponent(std::string_view name) const {
    auto path = path_.native();
    if (!path.ends_with('/') && !name.starts_with('/')) path += '/';
    return FileURL(path.append(name));
}

std::string FileURL::lastPathComponent() const {
    return path_.has_filename() ? path_.filename().native() : path_.native();
}

FileURL FileURL::deletingLastPathComponent() const {
    return FileURL(path_.parent_path());
}

std::string FileURL::description() const {
    constexpr gboolean keepsUnicode = FALSE;
    const GText path(g_uri_escape_string(path_.c_str(), "/", keepsUnicode));
    return std::string("file://") + path.get();
}

} // namespace vorlan
