// SPDX-License-Identifier: Apache-2.0

// A process that opens a store and does with it what a test says: a command a line on standard input, an answer a
// line on standard output. It ends, as programs do, when there is no further command.

#include <VorlanFoundation/Platform/Problems.h>
#include <VorlanFoundation/Platform/UserDefaults.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace vorlan;

namespace {

// Told on any thread, and asked for by the main one. Never destroyed: problems may come until the end.
struct Problems {
    void add(std::string_view message) {
        const std::lock_guard lock(mutex);
        ++count;
        last = message;
    }

    std::string description() {
        const std::lock_guard lock(mutex);
        return std::to_string(count) + " " + last;
    }

    std::mutex mutex;
    int count = 0;
    std::string last;
};

Problems& problems() {
    static auto* const only = new Problems; // NOLINT: see above
    return *only;
}

std::string textOf(bool value) {
    return value ? "true" : "false";
}

std::string get(UserDefaults& store, const std::string& key) {
    const auto value = store.objectForKey(key);
    return value ? value->description() : "absent";
}

// The counter only ever grows, for whoever reads along.
std::string fill(UserDefaults& store, const std::string& prefix, int count) {
    for (int i = 1; i <= count; ++i) {
        store.setObject(i, prefix + std::to_string(i));
        store.setObject(i, prefix + "-counter");
    }
    return "ok";
}

std::string countFilled(UserDefaults& store, const std::string& prefix, int count) {
    const auto entries = store.storedEntries();
    int right = 0;
    for (int i = 1; i <= count; ++i) {
        const auto entry = entries.find(prefix + std::to_string(i));
        right += entry != entries.end() && entry->second == Value(i) ? 1 : 0;
    }
    return std::to_string(right);
}

// Writes and removes until somebody kills it, and acknowledges each with a byte once the call has returned.
[[noreturn]] void flood(UserDefaults& store, int base) {
    for (int i = 1;; ++i) {
        const auto key = "k" + std::to_string(i % 50);
        if (i % 7 == 0) {
            store.removeObjectForKey(key);
        } else {
            store.setObject(base + i, key);
        }
        if (write(STDOUT_FILENO, "+", 1) != 1) _exit(1);
    }
}

// The same while another thread saves all the time, so that any instant is likely to be one of a save.
[[noreturn]] void floodAndSave(UserDefaults& store, int base) {
    std::thread([&store] {
        for (;;) store.synchronize();
    }).detach();
    flood(store, base);
}

// Leaves no room on the disk that a file is on.
std::string occupy(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0) return "cannot open";
    const std::array<char, 512> zeros{};
    for (std::size_t size = zeros.size(); size > 0;)
        if (const auto written = write(file, zeros.data(), size); written <= 0) size /= 2;
    close(file);
    return "ok";
}

// Lets no file be opened any more, or again as many as there may be.
std::string limitFiles(bool allows) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = allows ? limit.rlim_max : 3;
    return textOf(setrlimit(RLIMIT_NOFILE, &limit) == 0);
}

// Goes on as another user. Before the first use of the library: its threads would have to change as well.
std::string become(unsigned user) {
    const bool done =
        setgroups(0, nullptr) == 0 && setresgid(user, user, user) == 0 && setresuid(user, user, user) == 0;
    return textOf(done);
}

[[noreturn]] void leave(const std::string& how) {
    if (how == "exit") std::exit(0); // NOLINT(concurrency-mt-unsafe): as programs do
    if (how == "abruptly") _exit(0);
    std::abort();
}

// Answers before: a command that came earlier would have been read by the program that is gone.
[[noreturn]] void restart(const std::string& name) {
    std::cout << "ok" << std::endl;
    execl("/proc/self/exe", "VorlanDefaultsHost", name.c_str(), nullptr);
    _exit(1);
}

class Host {
public:
    explicit Host(std::string name) : name_(std::move(name)) {}

    std::string answer(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        std::string first;
        words >> command >> first;
        std::string rest;
        std::getline(words >> std::ws, rest);
        const auto known = commands_.find(command);
        return known != commands_.end() ? known->second(first, rest) : "unknown command";
    }

private:
    using Text = const std::string&;

    // Opened by the first command that needs it.
    UserDefaults& store() {
        if (!store_) store_.emplace(name_);
        return *store_;
    }

    std::string name_;
    std::optional<UserDefaults> store_;
    const std::map<std::string, std::function<std::string(Text, Text)>> commands_{
        {"open", [this](Text, Text) { return store().name(); }},
        {"set", [this](Text key, Text number) { return store().setObject(std::stoi(number), key), "ok"; }},
        {"text", [this](Text key, Text text) { return store().setObject(text, key), "ok"; }},
        {"blob",
         [this](Text key, Text size) { return store().setObject(Data(std::stoul(size)), key), "ok"; }},
        {"remove", [this](Text key, Text) { return store().removeObjectForKey(key), "ok"; }},
        {"register", [this](Text key, Text text) { return store().registerDefaults({{key, text}}), "ok"; }},
        {"get", [this](Text key, Text) { return get(store(), key); }},
        {"all", [this](Text, Text) { return Value(store().storedEntries()).description(); }},
        {"synchronize", [this](Text, Text) { return textOf(store().synchronize()); }},
        {"fill", [this](Text prefix, Text count) { return fill(store(), prefix, std::stoi(count)); }},
        {"count", [this](Text prefix, Text count) { return countFilled(store(), prefix, std::stoi(count)); }},
        {"flood", [this](Text base, Text) -> std::string { flood(store(), std::stoi(base)); }},
        {"flood-and-save",
         [this](Text base, Text) -> std::string { floodAndSave(store(), std::stoi(base)); }},
        {"problems", [](Text, Text) { return problems().description(); }},
        {"occupy", [](Text path, Text) { return occupy(path); }},
        {"free", [](Text path, Text) { return textOf(unlink(path.c_str()) == 0); }},
        {"files", [](Text allows, Text) { return limitFiles(allows == "on"); }},
        {"become", [](Text user, Text) { return become(static_cast<unsigned>(std::stoul(user))); }},
        {"leave", [](Text how, Text) -> std::string { leave(how); }},
        {"restart", [this](Text, Text) -> std::string { restart(name_); }},
    };
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    setProblemHandler([](std::string_view message, std::string_view) { problems().add(message); });
    Host host(argv[1]);
    for (std::string line; std::getline(std::cin, line);) std::cout << host.answer(line) << std::endl;
    return 0;
}
