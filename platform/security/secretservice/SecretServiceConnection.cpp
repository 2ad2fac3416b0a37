// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/SecretServiceConnection.h"

#include "platform/security/secretservice/Failure.h"
#include "platform/security/secretservice/ItemSecret.h"
#include "platform/security/secretservice/PrivateContext.h"

#include <openssl/crypto.h>

#include <cstring>
#include <string_view>
#include <utility>

namespace vorlan::security::secretservice {

namespace {

struct SecretValueRelease {
    void operator()(SecretValue* value) const noexcept { secret_value_unref(value); }
};
using SecretValueOwner = std::unique_ptr<SecretValue, SecretValueRelease>;

/// What GLib's calls report failures to: empty before each.
class ErrorPlace {
public:
    ErrorPlace() = default;
    ErrorPlace(const ErrorPlace&) = delete;
    ErrorPlace& operator=(const ErrorPlace&) = delete;
    ~ErrorPlace() { g_clear_error(&error_); }

    GError** receiver() noexcept { return &error_; }

    [[noreturn]] void fail() const {
        if (error_ != nullptr) throw Failure(*error_);
        throw Failure(Failure::Kind::other, errSecNotAvailable);
    }

private:
    GError* error_ = nullptr;
};

/// A call of GLib that ends in a callback, waited for within a limit.
class Wait {
public:
    Wait(const PrivateContext& context, const Deadline& deadline) : context_(context), deadline_(deadline) {}

    GCancellable* cancellable() const noexcept { return cancellable_.get(); }

    static void end(GObject*, GAsyncResult* result, gpointer self) {
        static_cast<Wait*>(self)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
    }

    GAsyncResult* result() {
        const auto isThere = [this] { return result_ != nullptr; };
        if (!context_.turnUntil(isThere, deadline_.millisecondsLeft())) {
            g_cancellable_cancel(cancellable_.get());
            context_.turnUntil(isThere);
        }
        return result_.get();
    }

private:
    const PrivateContext& context_;
    const Deadline& deadline_;
    ObjectOwner<GCancellable> cancellable_{g_cancellable_new()};
    ObjectOwner<GAsyncResult> result_;
};

ObjectOwner<GDBusConnection> findBus(const PrivateContext& context, const Deadline& deadline) {
    Wait wait(context, deadline);
    g_bus_get(G_BUS_TYPE_SESSION, wait.cancellable(), Wait::end, &wait);
    ErrorPlace error;
    ObjectOwner<GDBusConnection> bus(g_bus_get_finish(wait.result(), error.receiver()));
    if (!bus) error.fail();
    // Else the end of the bus would end the host, where it runs a main loop.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return bus;
}

ObjectOwner<SecretService> findService(const PrivateContext& context, const Deadline& deadline) {
    Wait wait(context, deadline);
    secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, wait.cancellable(),
                        Wait::end, &wait);
    ErrorPlace error;
    ObjectOwner<SecretService> service(secret_service_open_finish(wait.result(), error.receiver()));
    if (!service) error.fail();
    return service;
}

void cleanseAndFree(gpointer text) {
    OPENSSL_cleanse(text, std::strlen(static_cast<const char*>(text)));
    g_free(text);
}

} // namespace

SecretServiceConnection::SecretServiceConnection(const Deadline& deadline) {
    const PrivateContext context;
    auto bus = findBus(context, deadline);
    auto service = findService(context, deadline);
    const TextOwner owner(g_dbus_proxy_get_name_owner(G_DBUS_PROXY(service.get())));
    if (!owner || secret_service_get_session_dbus_path(service.get()) == nullptr)
        throw Failure(Failure::Kind::lost, errSecNotAvailable);
    context_ = context.context();
    bus_ = std::move(bus);
    service_ = std::move(service);
    owner_ = owner.get();
}

SecretServiceConnection::~SecretServiceConnection() {
    service_.reset();
    settle();
}

VariantOwner SecretServiceConnection::call(const Method& method, GVariant* arguments, const char* answerType,
                                           const Deadline& deadline) const {
    const auto owned = arguments == nullptr ? VariantOwner() : ownVariant(arguments);
    ErrorPlace error;
    VariantOwner answer(g_dbus_connection_call_sync(bus_.get(), owner_.c_str(), method.path, method.interface,
                                                    method.name, owned.get(), G_VARIANT_TYPE(answerType),
                                                    G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                    deadline.millisecondsLeft(), nullptr, error.receiver()));
    if (!answer) error.fail();
    return answer;
}

VariantOwner SecretServiceConnection::seal(const std::optional<Data>& value) const {
    const SecretText secret(value);
    const auto& text = secret.text();
    // A service that wants no key gets these very bytes, when the secret is sent.
    const SecretValueOwner plain(secret_value_new_full(
        g_strndup(text.data(), text.size()), static_cast<gssize>(text.size()), "text/plain", cleanseAndFree));
    GVariant* sealed = secret_service_encode_dbus_secret(service_.get(), plain.get());
    if (sealed == nullptr) throw Failure(Failure::Kind::other, errSecNotAvailable);
    return ownVariant(sealed);
}

std::optional<Data> SecretServiceConnection::open(GVariant* secret) const {
    if (!isWellFormed(secret)) throw Failure(Failure::Kind::other, errSecDecode);
    const SecretValueOwner plain(secret_service_decode_dbus_secret(service_.get(), secret));
    if (!plain) throw Failure(Failure::Kind::other, errSecDecode);
    gsize length = 0;
    const char* text = secret_value_get(plain.get(), &length);
    return valueInSecret(std::string_view(text, length));
}

// The library would say on standard error what is wrong with a secret.
bool SecretServiceConnection::isWellFormed(GVariant* secret) const {
    const char* session = nullptr;
    VariantOwner parameters;
    VariantOwner bytes;
    {
        GVariant* first = nullptr;
        GVariant* second = nullptr;
        g_variant_get(secret, "(&o@ay@ay&s)", &session, &first, &second, nullptr);
        parameters.reset(first);
        bytes.reset(second);
    }
    if (std::string_view(session) != sessionPath()) return false;
    const char* algorithms = secret_service_get_session_algorithms(service_.get());
    const bool isPlain = algorithms != nullptr && std::string_view(algorithms) == "plain";
    constexpr gsize block = 16;
    const auto parametersSize = g_variant_get_size(parameters.get());
    const auto size = g_variant_get_size(bytes.get());
    return isPlain ? parametersSize == 0 : parametersSize == block && size != 0 && size % block == 0;
}

void SecretServiceConnection::settle() const {
    secretservice::settle(context_.get());
}

} // namespace vorlan::security::secretservice
