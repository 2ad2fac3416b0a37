// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/UserDefaults.h>

#include "platform/defaults/DefaultsDomain.h"
#include "platform/files/UserFolders.h"

#include <VorlanFoundation/Platform/Bundle.h>
#include <VorlanFoundation/Platform/CheckedArithmetic.h>
#include <VorlanFoundation/Platform/Describe.h>

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace vorlan {

namespace {

bool isFolderName(std::string_view name) {
    constexpr std::size_t longest = 255; // NAME_MAX of all file systems that matter
    return !name.empty() && name.size() <= longest && name[0] != '.' &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

// The bundle identifier, or what the program is called.
std::string standardName() {
    const auto& bundle = Bundle::main();
    if (auto identifier = bundle.bundleIdentifier(); identifier && isFolderName(*identifier))
        return *identifier;
    if (const auto& executable = bundle.executableURL()) {
        auto name = executable->lastPathComponent();
        // The kernel says so of a program that was replaced while it runs.
        constexpr std::string_view mark = " (deleted)";
        if (name.ends_with(mark)) name.resize(name.size() - mark.size());
        if (isFolderName(name)) return name;
    }
    return "application";
}

std::string_view withoutBlanks(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos ? text.substr(start) : std::string_view();
}

bool startsLikeYes(std::string_view text) {
    text = withoutBlanks(text);
    const auto start = text.find_first_not_of("+-0");
    return start != std::string_view::npos &&
           std::string_view("YyTt123456789").find(text[start]) != text.npos;
}

// The nearest that there is; no number is zero.
std::int64_t nearestInteger(double number) {
    if (std::isnan(number)) return 0;
    if (checked::isInRange<std::int64_t>(number)) return static_cast<std::int64_t>(number);
    return number < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

std::int64_t integerAtStart(std::string_view text) {
    text = withoutBlanks(text);
    const bool isNegative = text.starts_with('-');
    if (text.starts_with('+') || isNegative) text.remove_prefix(1);
    if (text.empty() || text[0] < '0' || text[0] > '9') return 0;
    std::uint64_t digits = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), digits);
    constexpr auto highest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (parsed.ec != std::errc() || digits > highest)
        return isNegative ? std::numeric_limits<std::int64_t>::min()
                          : std::numeric_limits<std::int64_t>::max();
    return isNegative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
}

double numberAtStart(const std::string& text) {
    auto digits = withoutBlanks(text);
    if (digits.starts_with('+') || digits.starts_with('-')) digits.remove_prefix(1);
    // What else strtod reads: hexadecimal digits, and the names of what is no number.
    const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (isHexadecimal || digits.find_first_of(".0123456789") != 0) return 0;
    return g_ascii_strtod(text.c_str(), nullptr);
}

// Integers and numbers alike; the nearest where 53 bits do not hold the integer.
std::optional<double> numberOf(const Value& value) {
    if (const auto number = value.as<double>()) return number;
    if (const auto integer = value.as<std::int64_t>()) return static_cast<double>(*integer);
    if (const auto integer = value.as<std::uint64_t>()) return static_cast<double>(*integer);
    return std::nullopt;
}

std::string digitsOf(const Value& value) {
    if (const auto integer = value.as<std::int64_t>()) return std::to_string(*integer);
    return value.description();
}

} // namespace

UserDefaults& UserDefaults::standard() {
    // Before anything is made here: it may have a problem to report, and who is told may come back for the store.
    Bundle::main();
    static UserDefaults* const defaults = new UserDefaults(standardName());
    return *defaults;
}

std::vector<std::string> UserDefaults::suiteNames() {
    std::vector<std::string> names;
    const auto folder = folders::configuration();
    if (!folder) return names;
    std::error_code failed; // a folder that cannot be read has no stores
    for (std::filesystem::directory_iterator entry(*folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        std::error_code ignored;
        const auto name = entry->path().filename().native();
        if (isFolderName(name) && std::filesystem::is_regular_file(entry->path() / "defaults.plist", ignored))
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

UserDefaults::UserDefaults(std::string_view suiteName) {
    if (!isFolderName(suiteName))
        throw std::invalid_argument("UserDefaults: \"" + describe(suiteName) + "\" is no name of a folder");
    domain_ = DefaultsDomain::named(suiteName);
}

const std::string& UserDefaults::name() const noexcept {
    return domain_->name();
}

FileURL UserDefaults::fileURL() const {
    const auto folder = DefaultsDomain::folderOf(name());
    return FileURL(folder.value_or("/nonexistent")) / "defaults.plist";
}

bool UserDefaults::read(std::string_view key, FunctionRef<void(const Value&)> use) const {
    return domain_->read(key, use);
}

bool UserDefaults::boolForKey(std::string_view key) const {
    bool result = false;
    read(key, [&](const Value& value) {
        if (const auto* text = value.text()) {
            result = startsLikeYes(*text);
        } else {
            result = numberOf(value).value_or(0) != 0;
        }
    });
    return result;
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
    std::int64_t result = 0;
    read(key, [&](const Value& value) {
        if (const auto* text = value.text()) {
            result = integerAtStart(*text);
        } else if (const auto integer = value.as<std::int64_t>()) {
            result = *integer;
        } else {
            result = nearestInteger(numberOf(value).value_or(0));
        }
    });
    return result;
}

double UserDefaults::doubleForKey(std::string_view key) const {
    double result = 0;
    read(key, [&](const Value& value) {
        if (const auto* text = value.text()) {
            result = numberAtStart(*text);
        } else {
            result = numberOf(value).value_or(0);
        }
    });
    return result;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
    std::optional<std::string> result;
    read(key, [&](const Value& value) {
        if (const auto* text = value.text()) {
            result = *text;
        } else if (numberOf(value)) {
            result = digitsOf(value);
        }
    });
    return result;
}

void UserDefaults::setObject(Value value, std::string_view forKey) {
    domain_->set(forKey, value.isNull() ? std::nullopt : std::optional(std::move(value)));
}

void UserDefaults::removeObjectForKey(std::string_view key) {
    domain_->set(key, std::nullopt);
}

void UserDefaults::registerDefaults(Value::Dictionary defaults) {
    domain_->registerDefaults(std::move(defaults));
}

Value::Dictionary UserDefaults::dictionaryRepresentation() const {
    return domain_->entries(true);
}

Value::Dictionary UserDefaults::storedEntries() const {
    return domain_->entries(false);
}

KeyValueObservation UserDefaults::observe(std::string_view key, std::function<void()> handler) const {
    return domain_->observeKey(key, [handler = std::move(handler)](const KeyValueChange&) { handler(); });
}

KeyValueObservation UserDefaults::observe(std::string_view key, const Queue& queue,
                                          std::function<void()> handler) const {
    // The registration owns the handler: what waits on the queue when that ends finds it gone.
    const auto owned = std::make_shared<const std::function<void()>>(std::move(handler));
    return observe(key, [queue, owned] {
        queue.async([weak = std::weak_ptr(owned)] {
            if (const auto kept = weak.lock()) (*kept)();
        });
    });
}

bool UserDefaults::synchronize() const {
    return domain_->synchronize();
}

} // namespace vorlan
