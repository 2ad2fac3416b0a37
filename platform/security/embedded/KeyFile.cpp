// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/KeyFile.h"

#include "platform/files/FileBytes.h"
#include "platform/security/StatusError.h"
#include "platform/security/StoreRecord.h"
#include "platform/values/Checksum.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

namespace vorlan::security::embedded {

namespace {

// The file: these eight bytes, the key, and a checksum of both, smallest byte first.
constexpr std::string_view magic = "VORLKEY1";
constexpr std::size_t checkSize = sizeof(std::uint64_t);
constexpr std::size_t fileSize = magic.size() + Key::size + checkSize;

Data checked(std::span<const std::byte> content) {
    Checksum checksum;
    checksum.add(content);
    Data check;
    for (std::size_t i = 0; i < checkSize; ++i)
        check.push_back(static_cast<std::byte>(checksum.value() >> (8 * i)));
    return check;
}

bool isGuarded(const struct stat& status) {
    return status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

void requireGuarded(const std::filesystem::path& path, Guarded kind) {
    struct stat status{};
    if (lstat(path.c_str(), &status) != 0) throw StatusError(statusOfFileError(errno));
    const bool isOfKind = kind == Guarded::file ? S_ISREG(status.st_mode) : S_ISDIR(status.st_mode);
    if (!isOfKind || !isGuarded(status)) throw StatusError(errSecNotAvailable);
}

Key readKeyFile(const std::filesystem::path& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status{};
    if (!file || fstat(file.number(), &status) != 0) throw StatusError(statusOfFileError(errno));
    if (!S_ISREG(status.st_mode) || !isGuarded(status)) throw StatusError(errSecNotAvailable);
    auto bytes = readFile(file, path);
    const auto content = std::span(bytes).first(std::min(bytes.size(), fileSize - checkSize));
    const bool isValid = bytes.size() == fileSize && textFromData(content).starts_with(magic) &&
                         std::ranges::equal(checked(content), std::span(bytes).last(checkSize));
    if (!isValid) throw StatusError(errSecInvalidKeychain);
    const Key key(content.subspan(magic.size()).first<Key::size>());
    wipe(bytes);
    return key;
}

Key makeKeyFile(const std::filesystem::path& path) {
    const auto key = Key::random();
    auto bytes = dataFromText(magic);
    bytes.reserve(fileSize);
    bytes.insert(bytes.end(), key.bytes().begin(), key.bytes().end());
    const auto check = checked(bytes);
    bytes.insert(bytes.end(), check.begin(), check.end());
    const bool isMade = createFile(path, bytes);
    const int error = errno;
    wipe(bytes);
    if (!isMade && error != EEXIST) throw StatusError(statusOfFileError(error));
    return isMade ? key : readKeyFile(path);
}

} // namespace vorlan::security::embedded
