// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/Keyring.h"

#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/Prompt.h"

#include <algorithm>
#include <array>

namespace vorlan::security::secretservice {

namespace {

constexpr char collectionInterface[] = "org.freedesktop.Secret.Collection";

/// The object paths in one place of an answer.
Paths pathsIn(GVariant* answer, gsize place) {
    const VariantOwner list(g_variant_get_child_value(answer, place));
    Paths paths;
    GVariantIter entries;
    g_variant_iter_init(&entries, list.get());
    const char* path = nullptr;
    while (g_variant_iter_next(&entries, "&o", &path) != FALSE) paths.emplace_back(path);
    return paths;
}

std::string pathIn(GVariant* answer, gsize place) {
    const VariantOwner path(g_variant_get_child_value(answer, place));
    return g_variant_get_string(path.get(), nullptr);
}

/// Arguments of one list of object paths.
GVariant* argumentsOf(const Paths& paths) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const auto& path : paths) g_variant_builder_add(&builder, "o", path.c_str());
    return g_variant_new("(ao)", &builder);
}

[[noreturn]] void failAsLocked() {
    throw Failure(Failure::Kind::locked, errSecInteractionNotAllowed);
}

} // namespace

VariantOwner Keyring::call(const Method& method, GVariant* arguments, const char* answerType) const {
    return service_->call(method, arguments, answerType, deadline_);
}

VariantOwner Keyring::callService(const char* name, GVariant* arguments, const char* answerType) const {
    return call({servicePath, serviceInterface, name}, arguments, answerType);
}

Paths Keyring::find(const Attributes& attributes) {
    auto paths = search(attributes);
    if (!paths.empty()) return paths;
    // Some services find nothing in what is locked, and say no more.
    openDefault();
    return search(attributes);
}

Paths Keyring::search(const Attributes& attributes) {
    const auto answer =
        callService("SearchItems", g_variant_new("(@a{ss})", variantOf(attributes)), "(aoao)");
    auto paths = pathsIn(answer.get(), 0);
    const auto locked = pathsIn(answer.get(), 1);
    if (locked.empty()) return paths;
    open(locked);
    paths.insert(paths.end(), locked.begin(), locked.end());
    return paths;
}

std::string Keyring::openDefault() {
    auto path = defaultPath();
    if (isLocked(path)) open({path});
    openedDefault_ = path;
    return path;
}

void Keyring::lockDefault() {
    const auto answer = callService("Lock", argumentsOf({defaultPath()}), "(aoo)");
    finish(pathIn(answer.get(), 1));
}

// A service that has no default collection was never set up: new items have no place until the user logs in
// to it.
std::string Keyring::defaultPath() const {
    const auto answer = callService("ReadAlias", g_variant_new("(s)", "default"), "(o)");
    auto path = pathIn(answer.get(), 0);
    if (path == noObject) failAsLocked();
    return path;
}

bool Keyring::isLocked(const std::string& collection) const {
    try {
        const auto answer = call({collection.c_str(), propertiesInterface, "Get"},
                                 g_variant_new("(ss)", collectionInterface, "Locked"), "(v)");
        VariantOwner value;
        {
            GVariant* inner = nullptr;
            g_variant_get(answer.get(), "(v)", &inner);
            value.reset(inner);
        }
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) == FALSE)
            throw Failure(Failure::Kind::other, errSecNotAvailable);
        return g_variant_get_boolean(value.get()) != FALSE;
    } catch (const Failure& failure) {
        // Some services take a collection off the bus while it is locked.
        if (failure.kind() == Failure::Kind::gone) failAsLocked();
        throw;
    }
}

void Keyring::open(const Paths& paths) {
    const auto answer = callService("Unlock", argumentsOf(paths), "(aoo)");
    const auto prompt = pathIn(answer.get(), 1);
    finish(prompt);
    if (prompt != noObject) return;
    const auto opened = pathsIn(answer.get(), 0);
    const auto isOpen = [&](const std::string& path) {
        return std::ranges::find(opened, path) != opened.end();
    };
    if (!std::ranges::all_of(paths, isOpen)) failAsLocked();
}

void Keyring::finish(const std::string& prompt) {
    if (prompt == noObject) return;
    if (!allowsPrompts_) {
        dismiss(*service_, prompt, deadline_);
        failAsLocked();
    }
    ask(*service_, prompt, deadline_);
    deadline_.renew();
}

} // namespace vorlan::security::secretservice
