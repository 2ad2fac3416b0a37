// SPDX-License-Identifier: Apache-2.0
#pragma once

// The user's keychain, item by item: four functions over dictionaries that say which items are meant.
//
// KeychainManager (VorlanFoundation/Keychain.h) is what most hosts want; this is what it is made of.
//
//     Value secret;
//     const OSStatus status = SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
//                                                  {kSecAttrService, "com.example.mail"},
//                                                  {kSecAttrAccount, "anna"},
//                                                  {kSecReturnData, kCFBooleanTrue}},
//                                                 &secret);
//     if (status == errSecSuccess) use(secret.as<Data>());

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstdint>
#include <string>

namespace vorlan {

/// What an operation of the keychain came to: zero, or the number of a failure.
using OSStatus = std::int32_t;

/// Done.
inline constexpr OSStatus errSecSuccess = 0;
/// What was asked for is not offered by the store that answers.
inline constexpr OSStatus errSecUnimplemented = -4;
/// The disk is full.
inline constexpr OSStatus errSecDiskFull = -34;
/// The disk, or the file system, failed.
inline constexpr OSStatus errSecIO = -36;
/// The query or an attribute is not valid, or too large. See SecItemAdd.
inline constexpr OSStatus errSecParam = -50;
/// Memory is exhausted.
inline constexpr OSStatus errSecAllocate = -108;
/// The user dismissed the question for leave.
inline constexpr OSStatus errSecUserCanceled = -128;
/// The store cannot be reached, is busy, is not the one that was recorded, or lacks its key.
inline constexpr OSStatus errSecNotAvailable = -25291;
/// The passphrase is wrong.
inline constexpr OSStatus errSecAuthFailed = -25293;
/// The store's files are damaged, or were written by a newer version.
inline constexpr OSStatus errSecInvalidKeychain = -25295;
/// There is such an item already.
inline constexpr OSStatus errSecDuplicateItem = -25299;
/// There is no such item, as was made sure.
inline constexpr OSStatus errSecItemNotFound = -25300;
/// The store is locked, and no one may be asked to unlock it.
inline constexpr OSStatus errSecInteractionNotAllowed = -25308;
/// The item is there, but damaged.
inline constexpr OSStatus errSecDecode = -26275;
/// The host may not use items of that access group.
inline constexpr OSStatus errSecMissingEntitlement = -34018;

inline constexpr bool kCFBooleanTrue = true;
inline constexpr bool kCFBooleanFalse = false;

/// The class of items; required to add, and to delete without a reference. One of the five constants below.
inline constexpr char kSecClass[] = "class";
inline constexpr char kSecClassGenericPassword[] = "genp";
inline constexpr char kSecClassInternetPassword[] = "inet";
inline constexpr char kSecClassCertificate[] = "cert";
inline constexpr char kSecClassKey[] = "keys";
inline constexpr char kSecClassIdentity[] = "idnt";

/// What an item is for: a text of at most 4096 bytes of UTF-8, as is each of the following but where it says otherwise.
inline constexpr char kSecAttrService[] = "svce";
/// Whose it is: a text or bytes. Comes back as bytes.
inline constexpr char kSecAttrAccount[] = "acct";
/// Which applications share it.
inline constexpr char kSecAttrAccessGroup[] = "agrp";
/// Bytes of the host's own.
inline constexpr char kSecAttrGeneric[] = "gena";
/// What people see in the desktop's keyring, without a NUL; by default "service: account".
inline constexpr char kSecAttrLabel[] = "labl";
/// When it was added and last changed: dates, in what comes back.
inline constexpr char kSecAttrCreationDate[] = "cdat";
inline constexpr char kSecAttrModificationDate[] = "mdat";

/// Whether an item may be carried to the user's other machines: a Boolean, or in a query
/// kSecAttrSynchronizableAny for both. A query without it means those that may not.
inline constexpr char kSecAttrSynchronizable[] = "sync";
inline constexpr char kSecAttrSynchronizableAny[] = "syna";

/// When an item may be read: one of the six constants below. See KeychainStore for what they mean in each store.
inline constexpr char kSecAttrAccessible[] = "pdmn";
inline constexpr char kSecAttrAccessibleAlways[] = "dk";
inline constexpr char kSecAttrAccessibleAlwaysThisDeviceOnly[] = "dku";
inline constexpr char kSecAttrAccessibleWhenUnlocked[] = "ak";
inline constexpr char kSecAttrAccessibleWhenUnlockedThisDeviceOnly[] = "aku";
inline constexpr char kSecAttrAccessibleAfterFirstUnlock[] = "ck";
inline constexpr char kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly[] = "cku";

/// The secret: bytes, at most 1 MiB; may be missing.
inline constexpr char kSecValueData[] = "v_Data";
/// An item by its reference (18 bytes), as kSecReturnPersistentRef gave it.
inline constexpr char kSecValuePersistentRef[] = "v_PersistentRef";

/// What is to come back, true each: the secret, the attributes as a dictionary, the reference.
inline constexpr char kSecReturnData[] = "r_Data";
inline constexpr char kSecReturnAttributes[] = "r_Attributes";
inline constexpr char kSecReturnPersistentRef[] = "r_PersistentRef";

/// How many items are to be found: one, as without it (the oldest), or all.
inline constexpr char kSecMatchLimit[] = "m_Limit";
inline constexpr char kSecMatchLimitOne[] = "m_LimitOne";
inline constexpr char kSecMatchLimitAll[] = "m_LimitAll";

// All four:
//
// Threads: safe from any thread and any number of processes; each blocks its thread until the store has answered,
//          at most for some seconds. Not in a child that was forked without exec: errSecNotAvailable.
// Errors:  the status says what happened; `result` is set only with errSecSuccess. Not found is never answered for
//          a store that is locked, damaged or out of reach. After a failure that may be about to pass, every call
//          answers the same status for a while (1 s when the store was locked, else 5 s): a host that clears up
//          after a failed update by deleting must not find the store back in the middle of that.

/// Adds an item of `attributes`: of the class generic password, with service, account, access group, generic,
/// label, synchronizable, accessible and value as given. Where they are missing the texts are empty, the item may not
/// be carried to other machines and may be read when unlocked.
///
/// errSecDuplicateItem when there is one of the same class, service, account, access group and synchronizable.
/// errSecParam for another class or none, a value of the wrong type or too large, an attribute that is not known,
/// and for an item that is synchronizable and for this device only. errSecMissingEntitlement for an access group
/// that is not one of KeychainOptions::accessGroups.
///
/// `result`, where not null, gets what the kSecReturn attributes ask for: null if nothing; bytes for the secret or the
/// reference alone; a dictionary for attributes, or for several.
VORLAN_EXPORT OSStatus SecItemAdd(const Value::Dictionary& attributes, Value* result = nullptr);

/// Finds items: those that agree with every attribute that `query` has.
///
/// `result`, where not null, gets of the item what SecItemAdd describes, or with kSecMatchLimitAll an array of that,
/// the oldest first. errSecItemNotFound when there is none.
VORLAN_EXPORT OSStatus SecItemCopyMatching(const Value::Dictionary& query, Value* result = nullptr);

/// Changes the value, generic, label, accessible, and where given service, account, access group and synchronizable
/// of all items that agree with `query`; all or none of them in the embedded store.
///
/// errSecItemNotFound when there is none; errSecDuplicateItem when one would become what another is already.
VORLAN_EXPORT OSStatus SecItemUpdate(const Value::Dictionary& query,
                                     const Value::Dictionary& attributesToUpdate);

/// Deletes all items that agree with `query`. errSecItemNotFound when there is none.
VORLAN_EXPORT OSStatus SecItemDelete(const Value::Dictionary& query);

/// A sentence for logs about a status: "There is no such item".
VORLAN_EXPORT std::string SecCopyErrorMessageString(OSStatus status);

} // namespace vorlan
