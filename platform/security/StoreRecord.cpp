// SPDX-License-Identifier: Apache-2.0
#include "platform/security/StoreRecord.h"

#include "platform/files/FileBytes.h"
#include "platform/security/Hexadecimal.h"

#include <VorlanFoundation/Platform/RawValues.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <span>
#include <sstream>
#include <system_error>
#include <utility>

template <>
struct vorlan::RawValues<vorlan::KeychainOptions::Store> {
    using Store = KeychainOptions::Store;
    static constexpr std::array cases{
        std::pair(Store::automatic, std::string_view("automatic")),
        std::pair(Store::secretService, std::string_view("secretService")),
        std::pair(Store::embedded, std::string_view("embedded")),
        std::pair(Store::memory, std::string_view("memory")),
    };
};

namespace vorlan::security {

namespace {

constexpr std::string_view firstLine = "vorlan-keychain 1";

std::string textOf(const RecordedStore& recorded) {
    std::string text(firstLine);
    text += "\nstore " + std::string(nameOf(recorded.store));
    text += "\nidentifier " + hexadecimal(recorded.identifier);
    if (recorded.wasMoved) text += "\nmoved";
    return text + "\n";
}

// A record of a newer version is as good as damaged: who wrote it may keep items where this one would not look.
std::optional<RecordedStore> recordFrom(std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string line;
    if (!std::getline(lines, line) || line != firstLine) return std::nullopt;
    std::optional<KeychainOptions::Store> store;
    std::optional<ItemIdentifier> identifier;
    bool wasMoved = false;
    while (std::getline(lines, line)) {
        const auto space = line.find(' ');
        const auto key = line.substr(0, space);
        const auto value = space == std::string::npos ? std::string() : line.substr(space + 1);
        if (key == "store") store = storeOfName(value);
        if (key == "identifier") identifier = bytesFromHexadecimal<sizeof(ItemIdentifier)>(value);
        if (key == "moved") wasMoved = true;
    }
    using enum KeychainOptions::Store;
    if (!identifier || (store != secretService && store != embedded)) return std::nullopt;
    return RecordedStore{*store, *identifier, wasMoved};
}

} // namespace

std::optional<KeychainOptions::Store> storeOfName(std::string_view name) {
    return fromRawValue<KeychainOptions::Store>(name);
}

std::string_view nameOf(KeychainOptions::Store store) {
    return rawValue(store);
}

char letterOf(KeychainOptions::Store store) {
    switch (store) {
    case KeychainOptions::Store::secretService: return 'S';
    case KeychainOptions::Store::embedded: return 'E';
    default: return 'M';
    }
}

OSStatus statusOfFileError(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT: return errSecDiskFull;
    case ENOMEM: return errSecAllocate;
    case EIO: return errSecIO;
    default: return errSecNotAvailable;
    }
}

StoreRecord::Identity StoreRecord::identity() const {
    struct stat file{};
    if (lstat(path_.c_str(), &file) != 0)
        return errno == ENOENT || errno == ENOTDIR ? Identity() : Identity{.size = -2};
    const std::int64_t nanoseconds = std::int64_t{1'000'000'000} * file.st_mtim.tv_sec + file.st_mtim.tv_nsec;
    return {file.st_dev, file.st_ino, file.st_size, nanoseconds};
}

OSStatus StoreRecord::read(std::optional<RecordedStore>& recorded) {
    const auto now = identity();
    if (now != seen_) {
        ++version_;
        try {
            const auto bytes = readFile(path_);
            recorded_ = bytes ? recordFrom(textFromData(*bytes)) : std::nullopt;
            status_ = bytes && !recorded_ ? errSecInvalidKeychain : errSecSuccess;
            seen_ = now;
        } catch (const std::filesystem::filesystem_error& error) {
            return statusOfFileError(error.code().value());
        }
    }
    recorded = recorded_;
    return status_;
}

OSStatus StoreRecord::create(const RecordedStore& recorded) {
    const auto text = textOf(recorded);
    if (createFile(path_, std::as_bytes(std::span(text)))) return errSecSuccess;
    return errno == EEXIST ? errSecDuplicateItem : statusOfFileError(errno);
}

OSStatus StoreRecord::replace(const RecordedStore& recorded) {
    auto beside = path_;
    beside += ".new";
    unlink(beside.c_str()); // of a process that was killed
    const auto text = textOf(recorded);
    const bool isReplaced = createFile(beside, std::as_bytes(std::span(text))) &&
                            rename(beside.c_str(), path_.c_str()) == 0 && syncFolder(path_.parent_path());
    return isReplaced ? errSecSuccess : statusOfFileError(errno);
}

} // namespace vorlan::security
