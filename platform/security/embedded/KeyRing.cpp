// SPDX-License-Identifier: Apache-2.0
#include "platform/security/embedded/KeyRing.h"

#include "platform/security/StatusError.h"

#include <utility>

namespace vorlan::security::embedded {

namespace {

// The key that a block is sealed by.
Key wrappingKey(const Key& master, const std::optional<KeyRing::Passphrase>& passphrase) {
    if (!passphrase) return derivedKey(master, "wrap");
    const auto stretched = keyFromPassphrase(passphrase->text, passphrase->salt);
    return derivedKey(master, "wrap by passphrase", stretched.bytes());
}

Data together(std::initializer_list<const Key*> keys) {
    Data bytes;
    bytes.reserve(keys.size() * Key::size);
    for (const auto* key : keys) bytes.insert(bytes.end(), key->bytes().begin(), key->bytes().end());
    return bytes;
}

Data sealedKeys(const Key& wrapping, std::initializer_list<const Key*> keys, const Data& context) {
    auto bytes = together(keys);
    auto sealed = seal(wrapping, bytes, context);
    wipe(bytes);
    return sealed;
}

Key keyAt(const Data& bytes, std::size_t position) {
    return Key(std::span(bytes).subspan(position * Key::size).first<Key::size>());
}

} // namespace

ItemKey itemKeyOf(std::string_view accessible) {
    if (accessible.starts_with(kSecAttrAccessibleAlways)) return ItemKey::always;
    if (accessible.starts_with(kSecAttrAccessibleAfterFirstUnlock)) return ItemKey::afterFirstUnlock;
    return ItemKey::whenUnlocked;
}

KeyRing KeyRing::random(const ItemIdentifier& store) {
    KeyRing ring(store);
    for (auto* key : {&ring.index_, &ring.attributes_, &ring.always_}) *key = Key::random();
    ring.afterFirstUnlock_ = Key::random();
    ring.whenUnlocked_ = Key::random();
    return ring;
}

KeyRing::KeyRing(const Key& master, const ItemIdentifier& store, std::span<const std::byte> sealed)
    : store_(store) {
    auto keys = embedded::open(wrappingKey(master, {}), sealed, context("first"));
    if (!keys || keys->size() != 3 * Key::size) throw StatusError(errSecNotAvailable);
    index_ = keyAt(*keys, 0);
    attributes_ = keyAt(*keys, 1);
    always_ = keyAt(*keys, 2);
    wipe(*keys);
}

bool KeyRing::open(const Key& master, std::span<const std::byte> sealed,
                   const std::optional<Passphrase>& passphrase) {
    auto keys = embedded::open(wrappingKey(master, passphrase), sealed, context("second"));
    if (!keys || keys->size() != 2 * Key::size) return false;
    afterFirstUnlock_ = keyAt(*keys, 0);
    whenUnlocked_ = keyAt(*keys, 1);
    wipe(*keys);
    return true;
}

Data KeyRing::context(std::string_view block) const {
    return Packer().add("VK1 keys").add(block).add(store_).take();
}

Data KeyRing::sealedFirst(const Key& master) const {
    return sealedKeys(wrappingKey(master, {}), {&index_, &attributes_, &always_}, context("first"));
}

Data KeyRing::sealedSecond(const Key& master, const std::optional<Passphrase>& passphrase) const {
    if (!afterFirstUnlock_ || !whenUnlocked_) throw StatusError(errSecInteractionNotAllowed);
    return sealedKeys(wrappingKey(master, passphrase), {&*afterFirstUnlock_, &*whenUnlocked_},
                      context("second"));
}

void KeyRing::lock() {
    whenUnlocked_.reset();
    values_.clear();
}

const Key& KeyRing::values(ItemKey kind) const {
    if (kind == ItemKey::always) return always_;
    const auto& key = kind == ItemKey::afterFirstUnlock ? afterFirstUnlock_ : whenUnlocked_;
    if (!key) throw StatusError(errSecInteractionNotAllowed);
    return *key;
}

// Making a key takes longer than opening a password by it, and the same items are asked for again and again.
const Key& KeyRing::value(ItemKey kind, const ItemIdentifier& item) const {
    constexpr std::size_t most = 256;
    if (values_.size() >= most) values_.clear();
    const auto place = std::pair(kind, item);
    const auto found = values_.find(place);
    return found != values_.end()
               ? found->second
               : values_.emplace(place, derivedKey(values(kind), "item", item)).first->second;
}

} // namespace vorlan::security::embedded
