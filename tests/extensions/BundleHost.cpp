// SPDX-License-Identifier: Apache-2.0

// An application that tests put beside an Info.plist of theirs: it does what its arguments say, one after the other,
// and answers each with a line on standard output.

#include <VorlanFoundation/Extensions/Bundles.h>
#include <VorlanFoundation/Extensions/LocalizedText.h>
#include <VorlanFoundation/Logging/Logger.h>
#include <VorlanFoundation/Persistence/Folder.h>
#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

#include <functional>
#include <iostream>
#include <latch>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

using Text = std::optional<std::string>;

// What comes after a command, taken one by one.
class Arguments {
public:
    Arguments(int count, char** texts) : texts_(texts + 1, texts + count) {}
    bool isAtEnd() const { return next_ == texts_.size(); }
    std::string take() { return texts_.at(next_++); }

private:
    std::vector<std::string> texts_;
    std::size_t next_ = 0;
};

Text textOf(const std::optional<FileURL>& url) {
    return url ? Text(url->description()) : std::nullopt;
}

// The name of each language, with a comma behind it.
std::string textOf(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) text += name + ",";
    return text;
}

Text aboutAnother(const std::string& folder) {
    const auto other = Bundle::atURL(FileURL(folder));
    if (!other) return std::nullopt;
    return bundle::applicationName(*other) + " " + std::to_string(bundle::appVersion(*other)) + " " +
           bundle::appIdentifier(*other).value_or("absent") + " " +
           bundle::appMajorVersion(*other).value_or("absent") + " " +
           bundle::bundleVersion(*other).value_or("absent") + " " +
           bundle::facebookAppVersionString(*other).value_or("absent");
}

Text objectForKey(const std::string& key) {
    const auto& value = Bundle::main().objectForInfoDictionaryKey(key);
    return value.isNull() ? std::nullopt : Text(value.description());
}

Text setInSuite(const std::string& suite, const std::string& key, bool value) {
    UserDefaults store(suite);
    store.setObject(value, key);
    return store.synchronize() ? "ok" : "not saved";
}

// Says that it is ready, and waits until its input ends.
Text waitForStart() {
    std::cout << "ready" << std::endl;
    while (std::cin.get() != std::istream::traits_type::eof()) {}
    return "started";
}

// Eight threads that log so many lines each, all at once; each line tells whose it is, and where it ends.
Text flood(const std::string& name, int lines) {
    constexpr int count = 8;
    std::latch start(count);
    std::vector<std::jthread> threads;
    for (int t = 0; t < count; ++t)
        threads.emplace_back([&start, &name, lines, t] {
            start.arrive_and_wait();
            for (int i = 0; i < lines; ++i)
                Logger::log(name + "-" + std::to_string(t) + "-" + std::to_string(i) + ";");
        });
    threads.clear();
    return "flooded";
}

// Told on any thread, but none is left when they are asked for.
class Problems {
public:
    Problems() {
        setProblemHandler([this](std::string_view message, std::string_view where) {
            const std::lock_guard lock(mutex_);
            text_ += std::string(where) + ": " + std::string(message) + ";";
        });
    }
    Problems(const Problems&) = delete;
    Problems& operator=(const Problems&) = delete;
    ~Problems() { setProblemHandler(nullptr); }

    std::string text() {
        const std::lock_guard lock(mutex_);
        return text_;
    }

private:
    std::mutex mutex_;
    std::string text_;
};

using Command = std::function<Text(Arguments&)>;

std::map<std::string, Command> bundleCommands() {
    return {
        {"appIdentifier", [](Arguments&) { return bundle::appIdentifier(); }},
        {"appMajorVersion", [](Arguments&) { return bundle::appMajorVersion(); }},
        {"bundleVersion", [](Arguments&) { return bundle::bundleVersion(); }},
        {"facebookAppVersionString", [](Arguments&) { return bundle::facebookAppVersionString(); }},
        {"applicationName", [](Arguments&) { return bundle::applicationName(); }},
        {"appVersion", [](Arguments&) { return std::to_string(bundle::appVersion()); }},
        {"currentLanguageCode", [](Arguments&) { return locale::currentLanguageCode(); }},
        {"aboutAnother", [](Arguments& more) { return aboutAnother(more.take()); }},
        {"bundleURL", [](Arguments&) { return textOf(Bundle::main().bundleURL()); }},
        {"executableURL", [](Arguments&) { return textOf(Bundle::main().executableURL()); }},
        {"resourceURL", [](Arguments&) { return textOf(Bundle::main().resourceURL()); }},
        {"objectForKey", [](Arguments& more) { return objectForKey(more.take()); }},
        {"hasInfo", [](Arguments&) { return Bundle::main().infoDictionary() != nullptr ? "true" : "false"; }},
        {"localizations", [](Arguments&) { return textOf(Bundle::main().localizations()); }},
        {"localized", [](Arguments& more) { return text::localized(more.take()); }},
        {"localizedPlural",
         [](Arguments& more) {
             const auto key = more.take();
             return text::localizedPlural(key, std::stoll(more.take()));
         }},
        {"resource",
         [](Arguments& more) {
             const auto name = more.take();
             return textOf(Bundle::main().URLForResource(name, more.take()));
         }},
    };
}

std::map<std::string, Command> otherCommands() {
    return {
        {"applicationDataDirectory", [](Arguments&) { return textOf(Folder::applicationDataDirectory()); }},
        {"documentsDirectory", [](Arguments&) { return textOf(Folder::documentsDirectory()); }},
        {"storeName", [](Arguments&) { return UserDefaults::standard().name(); }},
        {"makeLogging", [](Arguments&) { return Logger::makeLogging(true), "ok"; }},
        {"log", [](Arguments& more) { return Logger::log(more.take()), "ok"; }},
        {"changeFileSizeLimit",
         [](Arguments& more) { return Logger::changeFileSizeLimit(std::stoll(more.take())), "ok"; }},
        {"waitForStart", [](Arguments&) { return waitForStart(); }},
        {"flood",
         [](Arguments& more) {
             const auto name = more.take();
             return flood(name, std::stoi(more.take()));
         }},
        {"setInSuite",
         [](Arguments& more) {
             const auto suite = more.take();
             const auto key = more.take();
             return setInSuite(suite, key, more.take() == "true");
         }},
    };
}

} // namespace

int main(int argc, char** argv) {
    Problems problems;
    auto commands = bundleCommands();
    commands.merge(otherCommands());
    commands["problems"] = [&](Arguments&) { return problems.text(); };
    commands["logProblems"] = [](Arguments&) {
        setProblemHandler([](std::string_view message, std::string_view) { Logger::log(message); });
        return "ok";
    };
    for (Arguments arguments(argc, argv); !arguments.isAtEnd();) {
        const auto known = commands.find(arguments.take());
        if (known == commands.end()) return 2;
        std::cout << known->second(arguments).value_or("absent") << std::endl;
    }
    return 0;
}
