// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Testing/TemporaryHome.h>

#include <VorlanFoundation/Platform/HomeChange.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace vorlan::testing {

namespace {

std::filesystem::path makeFolder() {
    auto name = (std::filesystem::temp_directory_path() / "vorlan-home-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw std::filesystem::filesystem_error("cannot make a temporary home", name,
                                                std::error_code(errno, std::generic_category()));
    return name;
}

} // namespace

TemporaryHome::TemporaryHome() : path_(makeFolder()) {
    detail::changeHome([&] {
        point("HOME", path_);
        point("XDG_CONFIG_HOME", path_ / ".config");
        point("XDG_DATA_HOME", path_ / ".local/share");
        point("XDG_CACHE_HOME", path_ / ".cache");
        point("XDG_STATE_HOME", path_ / ".local/state");
        point("XDG_RUNTIME_DIR", path_ / ".runtime");
    });
    // Programs refuse a runtime folder that others can look into.
    std::filesystem::permissions(path_ / ".runtime", std::filesystem::perms::owner_all);
}

TemporaryHome::~TemporaryHome() {
    detail::changeHome([&] { restore(); });
    std::error_code ignored; // A file that cannot be removed must not end the tests.
    std::filesystem::remove_all(path_, ignored);
}

void TemporaryHome::restore() {
    for (const auto& [variable, value] : former_) {
        if (value) {
            setenv(variable.c_str(), value->c_str(), 1);
        } else {
            unsetenv(variable.c_str());
        }
    }
}

void TemporaryHome::point(const std::string& variable, const std::filesystem::path& folder) {
    const char* value = std::getenv(variable.c_str());
    former_[variable] = value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    std::filesystem::create_directories(folder);
    setenv(variable.c_str(), folder.c_str(), 1);
}

} // namespace vorlan::testing
