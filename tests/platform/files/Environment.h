// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <VorlanFoundation/Platform/Locale.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace vorlan::tests {

/// Sets variables of the environment, or removes those without a value, as long as it lives.
///
/// Threads: one thread at a time, while no other reads the environment.
class Environment {
public:
    using Variables = std::map<std::string, std::optional<std::string>>;

    explicit Environment(const Variables& variables) {
        for (const auto& [name, value] : variables) {
            const char* former = std::getenv(name.c_str());
            former_[name] = former != nullptr ? std::optional<std::string>(former) : std::nullopt;
            set(name, value);
        }
    }
    Environment(const std::string& name, const std::optional<std::string>& value)
        : Environment(Variables{{name, value}}) {}
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() {
        for (const auto& [name, value] : former_) set(name, value);
    }

private:
    static void set(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    Variables former_;
};

/// The languages of a user, and nothing else from the environment, as the library sees it.
class Languages {
public:
    explicit Languages(const Environment::Variables& variables) : environment_(variables) {
        Locale::resetCurrent();
    }
    explicit Languages(const std::string& lang, const std::string& language = "")
        : Languages({{"LC_ALL", std::nullopt},
                     {"LC_MESSAGES", std::nullopt},
                     {"LC_TIME", std::nullopt},
                     {"LANG", lang},
                     {"LANGUAGE", language}}) {}

private:
    struct Reset {
        Reset() = default;
        Reset(const Reset&) = delete;
        Reset& operator=(const Reset&) = delete;
        ~Reset() { Locale::resetCurrent(); }
    };

    Reset afterwards_; // once the variables are what they were
    Environment environment_;
};

/// Is in another working directory as long as it lives.
///
/// Threads: one thread at a time, while no other goes by the working directory.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    ~WorkingDirectory() {
        std::error_code none; // a test must not end because of its surroundings
        std::filesystem::current_path(former_, none);
    }

private:
    std::filesystem::path former_ = std::filesystem::current_path();
};

} // namespace vorlan::tests
