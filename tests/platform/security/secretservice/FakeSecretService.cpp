// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/security/secretservice/FakeSecretService.h"

#include "tests/support/BusConnection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace vorlan::tests {

namespace {

using support::BusConnection;
using support::Reference;

constexpr char busName[] = "org.freedesktop.secrets";
constexpr guint32 doNotQueue = 4;
constexpr guint32 isPrimaryOwner = 1;

/// A call that came in, with the connection that it came by.
struct Letter {
    Reference<GDBusConnection> connection;
    Reference<GDBusMessage> message;
};

/// Carries calls from the thread that GLib reads all buses with, which must never wait, to the service's own.
class Letterbox {
public:
    void put(Letter letter) {
        const std::lock_guard lock(mutex_);
        letters_.push_back(std::move(letter));
        arrived_.notify_all();
    }

    void close() {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        arrived_.notify_all();
    }

    /// Absent once it is closed.
    std::optional<Letter> take() {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [&] { return isClosed_ || !letters_.empty(); });
        if (isClosed_) return std::nullopt;
        auto letter = std::move(letters_.front());
        letters_.pop_front();
        return letter;
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Letter> letters_;
    bool isClosed_ = false;
};

/// The letterboxes by number: GLib carries a number to its thread, and what it stands for is found under a lock.
class Letterboxes {
public:
    static Letterboxes& all() {
        static Letterboxes boxes;
        return boxes;
    }

    guint add(std::shared_ptr<Letterbox> box) {
        const std::lock_guard lock(mutex_);
        boxes_[++last_] = std::move(box);
        return last_;
    }

    void remove(guint number) {
        const std::lock_guard lock(mutex_);
        boxes_.erase(number);
    }

    /// Null when it is gone.
    std::shared_ptr<Letterbox> at(guint number) {
        const std::lock_guard lock(mutex_);
        const auto found = boxes_.find(number);
        return found == boxes_.end() ? nullptr : found->second;
    }

private:
    std::mutex mutex_;
    std::map<guint, std::shared_ptr<Letterbox>> boxes_;
    guint last_ = 0;
};

GDBusMessage* takeCalls(GDBusConnection* connection, GDBusMessage* message, gboolean isIncoming,
                        gpointer number) {
    if (isIncoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
        return message;
    Letter letter{Reference<GDBusConnection>(static_cast<GDBusConnection*>(g_object_ref(connection))),
                  Reference<GDBusMessage>(message)};
    if (const auto box = Letterboxes::all().at(GPOINTER_TO_UINT(number))) box->put(std::move(letter));
    return nullptr;
}

/// What becomes of one call.
struct Fate {
    bool isDone = true;
    bool isAnswered = true;
    bool isDeadly = false;
    std::string error = {};
};

void send(const Letter& letter, GDBusMessage* reply) {
    const Reference<GDBusMessage> owner(reply);
    g_dbus_connection_send_message(letter.connection.get(), reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

void sendError(const Letter& letter, const BusError& error) {
    send(letter, g_dbus_message_new_method_error_literal(letter.message.get(), error.name.c_str(),
                                                         error.message.c_str()));
}

void sendReply(const Letter& letter, const FakeReply& reply) {
    auto* message = g_dbus_message_new_method_reply(letter.message.get());
    g_dbus_message_set_body(message, reply.body.get());
    send(letter, message);
    if (!reply.completed) return;
    auto* signal =
        g_dbus_message_new_signal(reply.promptPath.c_str(), "org.freedesktop.Secret.Prompt", "Completed");
    g_dbus_message_set_body(signal, reply.completed.get());
    send(letter, signal);
}

} // namespace

/// The service itself: its place on the bus, and what it was told.
class FakeSecretService::Service {
public:
    explicit Service(const support::PrivateBus& bus) : bus_(bus), thread_([this] { run(); }) { connect(); }

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    ~Service() {
        disconnect();
        Letterboxes::all().remove(number_);
        letterbox_->close();
        thread_.join();
    }

    void connect();
    void disconnect();

    /// Lets the caller see and change what is kept.
    template <class Function>
    auto withKeyring(Function function) {
        const std::lock_guard lock(mutex_);
        return function(keyring_);
    }

    void tell(const std::string& method, const Fate& fate, std::size_t count) {
        const std::lock_guard lock(mutex_);
        fates_[method] = {fate, count};
    }

    void turnLockEvery(std::size_t calls, std::size_t first) {
        const std::lock_guard lock(mutex_);
        callsBetweenTurns_ = calls;
        callsUntilTurn_ = first;
        keyring_.isLocked = false;
    }

    void behave() {
        const std::lock_guard lock(mutex_);
        fates_.clear();
    }

    std::size_t callCount(const std::string& method) const {
        const std::lock_guard lock(mutex_);
        const auto found = calls_.find(method);
        return found == calls_.end() ? 0 : found->second;
    }

    bool waitForCalls(const std::string& method, std::size_t count) {
        std::unique_lock lock(mutex_);
        return called_.wait_for(lock, std::chrono::seconds(10), [&] { return calls_[method] >= count; });
    }

private:
    void run() {
        while (const auto letter = letterbox_->take()) answer(*letter);
    }

    void answer(const Letter& letter);
    void deliver(const Letter& letter, const Fate& fate);
    void turnLock();
    Fate nextFate(const std::string& method);
    FakeReply work(const Letter& letter);

    const support::PrivateBus& bus_;
    const std::shared_ptr<Letterbox> letterbox_ = std::make_shared<Letterbox>();
    const guint number_ = Letterboxes::all().add(letterbox_);
    mutable std::mutex mutex_;
    std::condition_variable called_;
    FakeKeyring keyring_;
    std::map<std::string, std::pair<Fate, std::size_t>> fates_;
    std::map<std::string, std::size_t> calls_;
    std::size_t callsBetweenTurns_ = 0;
    std::size_t callsUntilTurn_ = 0;
    std::unique_ptr<BusConnection> connection_;
    std::thread thread_;
};

void FakeSecretService::Service::connect() {
    auto connection = std::make_unique<BusConnection>(bus_.address());
    if (connection->get() == nullptr) return;
    g_dbus_connection_add_filter(connection->get(), takeCalls, GUINT_TO_POINTER(number_), nullptr);
    const auto answer = connection->call(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"},
        g_variant_new("(su)", busName, doNotQueue));
    guint32 result = 0;
    if (answer) g_variant_get(answer.get(), "(u)", &result);
    EXPECT_EQ(result, isPrimaryOwner) << "somebody else is the Secret Service";
    const std::lock_guard lock(mutex_);
    connection_ = std::move(connection);
}

void FakeSecretService::Service::disconnect() {
    std::unique_ptr<BusConnection> connection;
    {
        const std::lock_guard lock(mutex_);
        connection = std::exchange(connection_, nullptr);
        keyring_.forgetSessions();
    }
    if (!connection) return;
    const std::string name = g_dbus_connection_get_unique_name(connection->get());
    connection->close();
    // The bus notices that later; who calls after this is to meet nobody, not someone who is about to leave.
    if (bus_.isRunning()) BusConnection(bus_.address()).waitForName(name, false);
}

void FakeSecretService::Service::turnLock() {
    if (callsBetweenTurns_ == 0 || callsUntilTurn_-- != 0) return;
    callsUntilTurn_ = callsBetweenTurns_ - 1;
    keyring_.isLocked = !keyring_.isLocked;
}

Fate FakeSecretService::Service::nextFate(const std::string& method) {
    const std::lock_guard lock(mutex_);
    ++calls_[method];
    turnLock();
    called_.notify_all();
    const auto found = fates_.find(method);
    if (found == fates_.end()) return {};
    auto fate = found->second.first;
    if (--found->second.second == 0) fates_.erase(found);
    return fate;
}

FakeReply FakeSecretService::Service::work(const Letter& letter) {
    auto* message = letter.message.get();
    auto* body = g_dbus_message_get_body(message);
    const auto arguments = support::owned(body != nullptr ? g_variant_ref(body) : g_variant_new("()"));
    const auto* interface = g_dbus_message_get_interface(message);
    const std::lock_guard lock(mutex_);
    return keyring_.answer({g_dbus_message_get_path(message), interface != nullptr ? interface : "",
                            g_dbus_message_get_member(message), arguments.get()});
}

void FakeSecretService::Service::deliver(const Letter& letter, const Fate& fate) {
    try {
        if (!fate.error.empty()) throw BusError{fate.error, "as the test wants it"};
        if (!fate.isDone) return;
        const auto reply = work(letter);
        if (fate.isAnswered) sendReply(letter, reply);
    } catch (const BusError& error) {
        sendError(letter, error);
    }
}

void FakeSecretService::Service::answer(const Letter& letter) {
    const auto fate = nextFate(g_dbus_message_get_member(letter.message.get()));
    deliver(letter, fate);
    if (fate.isDeadly) disconnect();
}

FakeSecretService::FakeSecretService(const support::PrivateBus& bus)
    : service_(std::make_unique<Service>(bus)) {}

FakeSecretService::~FakeSecretService() = default;

void FakeSecretService::setLocked(bool isLocked, bool needsPrompt) {
    service_->withKeyring([&](FakeKeyring& keyring) {
        keyring.isLocked = isLocked;
        keyring.needsPrompt = needsPrompt;
    });
}

void FakeSecretService::setPrompts(Prompts prompts) {
    service_->withKeyring([&](FakeKeyring& keyring) { keyring.prompts = prompts; });
}

void FakeSecretService::setHasDefault(bool hasDefault) {
    service_->withKeyring([&](FakeKeyring& keyring) { keyring.hasDefault = hasDefault; });
}

void FakeSecretService::setHidesLocked(bool hidesLocked) {
    service_->withKeyring([&](FakeKeyring& keyring) { keyring.hidesLocked = hidesLocked; });
}

void FakeSecretService::ignore(const std::string& method, std::size_t count) {
    service_->tell(method, {.isDone = false, .isAnswered = false}, count);
}

void FakeSecretService::loseReply(const std::string& method, std::size_t count) {
    service_->tell(method, {.isAnswered = false}, count);
}

void FakeSecretService::fail(const std::string& method, const std::string& error, std::size_t count) {
    service_->tell(method, {.error = error}, count);
}

void FakeSecretService::dieAt(const std::string& method, bool afterwards) {
    service_->tell(method, {.isDone = afterwards, .isAnswered = false, .isDeadly = true}, 1);
}

void FakeSecretService::behave() {
    service_->behave();
}

void FakeSecretService::turnLockEvery(std::size_t calls, std::size_t first) {
    service_->turnLockEvery(calls, first);
}

void FakeSecretService::setWrongSecrets(bool areWrong) {
    service_->withKeyring([&](FakeKeyring& keyring) { keyring.hasWrongSecrets = areWrong; });
}

void FakeSecretService::duplicateItems(const std::map<std::string, std::string>& changes) {
    service_->withKeyring([&](FakeKeyring& keyring) { keyring.duplicateItems(changes); });
}

std::size_t FakeSecretService::itemCount() const {
    return service_->withKeyring([](FakeKeyring& keyring) { return keyring.itemCount(); });
}

std::size_t FakeSecretService::callCount(const std::string& method) const {
    return service_->callCount(method);
}

void FakeSecretService::waitForCalls(const std::string& method, std::size_t count) const {
    EXPECT_TRUE(service_->waitForCalls(method, count)) << method << " was not called so often";
}

void FakeSecretService::disconnect() {
    service_->disconnect();
}

void FakeSecretService::connect() {
    service_->connect();
}

} // namespace vorlan::tests
