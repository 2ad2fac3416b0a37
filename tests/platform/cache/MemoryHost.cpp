// SPDX-License-Identifier: Apache-2.0

// A host that has less memory than it would like: it keeps a cache filled to more than it can hold beside the file that
// it reads over and over. Whatever the cache gives back it fills up again.
//
//     VorlanMemoryHost WANTED ROOM     in MiB: how much to put into the cache in all, and how much at a time

#include <VorlanFoundation/Platform/NSCache.h>

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace vorlan;

namespace {

constexpr std::size_t blockSize = 64 * 1024;
constexpr std::size_t fileSize = 64 * 1024 * 1024;

[[noreturn]] void fail(const std::string& what) {
    std::cout << "failed: " << what << std::endl;
    std::exit(1);
}

// By the system's call, not by the library's: there a sanitizer would set aside as much again for its own books.
long map(std::size_t size, int protection, int flags, int file) {
    const long start = syscall(SYS_mmap, nullptr, size, protection, flags, file, 0);
    if (start == -1) fail("no memory");
    return start;
}

/// Memory that the kernel gives and takes back; nothing else of the process can use it.
class Block {
public:
    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { syscall(SYS_munmap, start_, blockSize); }

private:
    const long start_ =
        map(blockSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1);
};

/// A file on a disk, with no name.
class File {
public:
    File() {
        std::string name = "/var/tmp/VorlanMemoryHost-XXXXXX";
        const int file = mkstemp(name.data());
        if (file < 0) fail("no file");
        unlink(name.c_str());
        const std::vector<char> part(1024 * 1024, 'x');
        for (std::size_t size = 0; size < fileSize; size += part.size())
            if (write(file, part.data(), part.size()) != static_cast<ssize_t>(part.size())) fail("no room");
        if (fsync(file) != 0) fail("no disk"); // what is not written yet could not be dropped from memory
        start_ = map(fileSize, PROT_READ, MAP_SHARED, file);
        close(file);
    }

    /// Has the kernel read what is not in memory, as if each page was looked at.
    void read() const {
        if (syscall(SYS_madvise, start_, fileSize, MADV_POPULATE_READ) != 0) fail("the file cannot be read");
    }

private:
    long start_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto megabytes = [&](int place) {
        return static_cast<std::size_t>(std::atoi(argv[place])) * 1024 * 1024 / blockSize;
    };
    const std::size_t wanted = megabytes(1);
    const std::size_t room = megabytes(2);

    std::cout << "ready" << std::endl;
    std::string line;
    if (!std::getline(std::cin, line)) return 2;

    const File file;
    NSCache<Block> cache;
    std::atomic<std::size_t> givenBack = 0;
    cache.setEvictionHandler([&](const std::string&, const auto&) { ++givenBack; });
    std::size_t inserted = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(50);
    while (inserted < wanted) {
        if (std::chrono::steady_clock::now() > deadline) fail("given back " + std::to_string(givenBack));
        for (; cache.count() < room && inserted < wanted; ++inserted)
            cache.setObject(std::to_string(inserted), std::make_shared<Block>());
        file.read();
    }
    cache.setEvictionHandler(nullptr);
    std::cout << "inserted " << inserted << " gave back " << givenBack << std::endl;
    return 0;
}
