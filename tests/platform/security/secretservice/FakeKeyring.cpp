// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/secretservice/FakeKeyring.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace vorlan::tests {

namespace {

constexpr char collectionPath[] = "/org/freedesktop/secrets/collection/test";
constexpr char aliasPath[] = "/org/freedesktop/secrets/aliases/default";
constexpr char noPath[] = "/";

using support::childOf;
using support::dictionaryOf;
using support::objectPaths;
using support::textOf;

FakeReply replyWith(GVariant* body) {
    return {.body = support::owned(body)};
}

bool contains(const std::map<std::string, std::string>& all, const std::map<std::string, std::string>& some) {
    return std::ranges::all_of(some, [&](const auto& entry) {
        const auto found = all.find(entry.first);
        return found != all.end() && found->second == entry.second;
    });
}

} // namespace

const std::map<std::string, FakeKeyring::Method>& FakeKeyring::methods() {
    static const std::map<std::string, Method> methods{
        {"org.freedesktop.Secret.Service.OpenSession", {"(sv)", &FakeKeyring::openSession}},
        {"org.freedesktop.Secret.Service.ReadAlias", {"(s)", &FakeKeyring::readAlias}},
        {"org.freedesktop.Secret.Service.SearchItems", {"(a{ss})", &FakeKeyring::searchService}},
        {"org.freedesktop.Secret.Service.Lock", {"(ao)", &FakeKeyring::lock}},
        {"org.freedesktop.Secret.Service.Unlock", {"(ao)", &FakeKeyring::unlock}},
        {"org.freedesktop.Secret.Service.GetSecrets", {"(aoo)", &FakeKeyring::getSecrets}},
        {"org.freedesktop.Secret.Session.Close", {"()", &FakeKeyring::closeSession}},
        {"org.freedesktop.Secret.Collection.SearchItems", {"(a{ss})", &FakeKeyring::searchCollection}},
        {"org.freedesktop.Secret.Collection.CreateItem", {"(a{sv}(oayays)b)", &FakeKeyring::createItem}},
        {"org.freedesktop.Secret.Item.Delete", {"()", &FakeKeyring::deleteItem}},
        {"org.freedesktop.Secret.Item.GetSecret", {"(o)", &FakeKeyring::getSecret}},
        {"org.freedesktop.Secret.Item.SetSecret", {"((oayays))", &FakeKeyring::setSecret}},
        {"org.freedesktop.Secret.Prompt.Prompt", {"(s)", &FakeKeyring::prompt}},
        {"org.freedesktop.Secret.Prompt.Dismiss", {"()", &FakeKeyring::dismiss}},
        {"org.freedesktop.DBus.Properties.Get", {"(ss)", &FakeKeyring::get}},
        {"org.freedesktop.DBus.Properties.GetAll", {"(s)", &FakeKeyring::getAll}},
        {"org.freedesktop.DBus.Properties.Set", {"(ssv)", &FakeKeyring::set}},
    };
    return methods;
}

FakeReply FakeKeyring::answer(const FakeCall& call) {
    const auto method = methods().find(call.interface + "." + call.member);
    if (method == methods().end()) throw BusError{"org.freedesktop.DBus.Error.UnknownMethod", call.member};
    if (!g_variant_is_of_type(call.arguments, G_VARIANT_TYPE(method->second.arguments)))
        throw BusError{"org.freedesktop.DBus.Error.InvalidArgs", call.member};
    return (this->*method->second.answer)(call);
}

void FakeKeyring::forgetSessions() {
    sessions_.clear();
    openPrompts_.clear();
}

void FakeKeyring::duplicateItems(const std::map<std::string, std::string>& changes) {
    const auto originals = items_;
    for (const auto& [number, original] : originals) {
        auto& item = items_[++lastNumber_] = original;
        for (const auto& [name, value] : changes) item.attributes[name] = value;
    }
}

FakeReply FakeKeyring::openSession(const FakeCall& call) {
    if (textOf(call.arguments, 0) != "plain")
        throw BusError{"org.freedesktop.DBus.Error.NotSupported", "only plain sessions"};
    const auto path = std::string(servicePath) + "/session/s" + std::to_string(++lastNumber_);
    sessions_.insert(path);
    return replyWith(g_variant_new("(vo)", g_variant_new_string(""), path.c_str()));
}

FakeReply FakeKeyring::closeSession(const FakeCall& call) {
    requireSession(call.path);
    sessions_.erase(call.path);
    return replyWith(g_variant_new("()"));
}

FakeReply FakeKeyring::readAlias(const FakeCall& call) {
    const bool isKnown = hasDefault && textOf(call.arguments, 0) == "default";
    return replyWith(g_variant_new("(o)", isKnown ? collectionPath : noPath));
}

FakeReply FakeKeyring::searchService(const FakeCall& call) {
    const auto paths = pathsOf(dictionaryOf(childOf(call.arguments, 0).get()));
    const std::vector<std::string> none;
    return replyWith(g_variant_new("(@ao@ao)", objectPaths(isLocked ? none : paths),
                                   objectPaths(isLocked && !hidesLocked ? paths : none)));
}

FakeReply FakeKeyring::searchCollection(const FakeCall& call) {
    requireCollection(call.path);
    const auto paths = pathsOf(dictionaryOf(childOf(call.arguments, 0).get()));
    return replyWith(
        g_variant_new("(@ao)", objectPaths(isLocked && hidesLocked ? std::vector<std::string>() : paths)));
}

FakeReply FakeKeyring::lock(const FakeCall& call) {
    isLocked = true;
    return replyWith(g_variant_new("(@aoo)", childOf(call.arguments, 0).get(), noPath));
}

FakeReply FakeKeyring::unlock(const FakeCall& call) {
    if (!isLocked || !needsPrompt) {
        isLocked = false;
        return replyWith(g_variant_new("(@aoo)", childOf(call.arguments, 0).get(), noPath));
    }
    const auto path = std::string(servicePath) + "/prompt/p" + std::to_string(++lastNumber_);
    openPrompts_.insert(path);
    return replyWith(g_variant_new("(@aoo)", objectPaths({}), path.c_str()));
}

FakeReply FakeKeyring::getSecrets(const FakeCall& call) {
    const auto session = textOf(call.arguments, 1);
    requireSession(session);
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{o(oayays)}"));
    const auto paths = childOf(call.arguments, 0);
    for (gsize i = 0; i < g_variant_n_children(paths.get()); ++i) {
        const auto path = textOf(paths.get(), i);
        // As the real ones do: what cannot be had now is left out.
        const auto number = numberOf(path);
        if (isLocked || !number || !items_.contains(*number)) continue;
        g_variant_builder_add(&builder, "{o@(oayays)}", path.c_str(), secretOf(items_.at(*number), session));
    }
    return replyWith(g_variant_new("(@a{o(oayays)})", g_variant_builder_end(&builder)));
}

FakeReply FakeKeyring::createItem(const FakeCall& call) {
    requireCollection(call.path);
    requireUnlocked();
    Item item;
    const auto given = childOf(call.arguments, 0);
    const support::Reference<GVariant> attributes(g_variant_lookup_value(
        given.get(), "org.freedesktop.Secret.Item.Attributes", G_VARIANT_TYPE("a{ss}")));
    if (attributes) item.attributes = dictionaryOf(attributes.get());
    const gchar* label = "";
    g_variant_lookup(given.get(), "org.freedesktop.Secret.Item.Label", "&s", &label);
    item.label = label;
    store(item, childOf(call.arguments, 1).get());
    item.created = item.modified = ++time_;
    const auto path =
        pathFor(item.attributes, g_variant_get_boolean(childOf(call.arguments, 2).get()) != FALSE);
    items_[*numberOf(path)] = std::move(item);
    return replyWith(g_variant_new("(oo)", path.c_str(), noPath));
}

std::string FakeKeyring::pathFor(const Attributes& attributes, bool isReplaced) {
    const auto same = pathsOf(attributes);
    return isReplaced && !same.empty() ? same.front() : pathOf(++lastNumber_);
}

FakeReply FakeKeyring::deleteItem(const FakeCall& call) {
    itemAt(call.path);
    requireUnlocked();
    items_.erase(*numberOf(call.path));
    return replyWith(g_variant_new("(o)", noPath));
}

FakeReply FakeKeyring::getSecret(const FakeCall& call) {
    const auto session = textOf(call.arguments, 0);
    requireSession(session);
    const auto& item = itemAt(call.path);
    requireUnlocked();
    return replyWith(g_variant_new("(@(oayays))", secretOf(item, session)));
}

FakeReply FakeKeyring::setSecret(const FakeCall& call) {
    auto& item = itemAt(call.path);
    requireUnlocked();
    store(item, childOf(call.arguments, 0).get());
    item.modified = ++time_;
    return replyWith(g_variant_new("()"));
}

FakeReply FakeKeyring::prompt(const FakeCall& call) {
    if (prompts != FakePrompts::unanswered) return endPrompt(call.path, prompts == FakePrompts::granted);
    if (!openPrompts_.contains(call.path))
        throw BusError{"org.freedesktop.Secret.Error.NoSuchObject", call.path};
    return replyWith(g_variant_new("()"));
}

FakeReply FakeKeyring::dismiss(const FakeCall& call) {
    return endPrompt(call.path, false);
}

FakeReply FakeKeyring::endPrompt(const std::string& path, bool isGranted) {
    if (openPrompts_.erase(path) == 0) throw BusError{"org.freedesktop.Secret.Error.NoSuchObject", path};
    if (isGranted) isLocked = false;
    std::vector<std::string> unlocked;
    if (isGranted) unlocked.emplace_back(collectionPath);
    return {.body = support::owned(g_variant_new("()")),
            .promptPath = path,
            .completed =
                support::owned(g_variant_new("(bv)", isGranted ? FALSE : TRUE, objectPaths(unlocked)))};
}

void FakeKeyring::requireUnlocked() const {
    if (isLocked) throw BusError{"org.freedesktop.Secret.Error.IsLocked", "the collection is locked"};
}

void FakeKeyring::requireSession(const std::string& path) const {
    if (!sessions_.contains(path)) throw BusError{"org.freedesktop.Secret.Error.NoSession", path};
}

void FakeKeyring::requireCollection(const std::string& path) const {
    if (path == collectionPath || (hasDefault && path == aliasPath)) return;
    throw BusError{"org.freedesktop.DBus.Error.UnknownMethod", path};
}

std::string FakeKeyring::pathOf(Number number) {
    return std::string(collectionPath) + "/" + std::to_string(number);
}

std::optional<FakeKeyring::Number> FakeKeyring::numberOf(const std::string& path) {
    const std::string folder = std::string(collectionPath) + "/";
    if (!path.starts_with(folder)) return std::nullopt;
    Number number = 0;
    const auto* end = path.data() + path.size();
    const auto read = std::from_chars(path.data() + folder.size(), end, number);
    if (read.ptr != end) return std::nullopt;
    return number;
}

FakeKeyring::Item& FakeKeyring::itemAt(const std::string& path) {
    const auto number = numberOf(path);
    if (!number || !items_.contains(*number))
        throw BusError{"org.freedesktop.DBus.Error.UnknownObject", path};
    return items_.at(*number);
}

std::vector<std::string> FakeKeyring::pathsOf(const Attributes& attributes) const {
    std::vector<std::string> paths;
    for (const auto& [number, item] : items_)
        if (contains(item.attributes, attributes)) paths.push_back(pathOf(number));
    return paths;
}

GVariant* FakeKeyring::secretOf(const Item& item, const std::string& session) const {
    const std::string_view secret = hasWrongSecrets ? std::string_view("something else") : item.secret;
    return g_variant_new("(o@ay@ays)", session.c_str(), support::byteArray(""), support::byteArray(secret),
                         item.contentType.c_str());
}

void FakeKeyring::store(Item& item, GVariant* secret) const {
    requireSession(textOf(secret, 0));
    item.secret = support::bytesOf(childOf(secret, 2).get());
    item.contentType = textOf(secret, 3);
}

} // namespace vorlan::tests
