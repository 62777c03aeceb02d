#include "twin/service/control_socket.h"

#include <array>
#include <cstddef>
#include <gio/gio.h>
#include <gio/gunixsocketaddress.h>
#include <glib/gstdio.h>
#include <list>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tessaro {
namespace {

constexpr std::size_t longestLine = 1000; // bytes
constexpr std::size_t mostClients = 16;

struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
};
template<typename Object>
using Reference = std::unique_ptr<Object, Unreference>;

/// One client and the bytes of the line that it has begun.
class Client {
public:
    explicit Client(GSocketConnection* connection)
        : m_connection(G_SOCKET_CONNECTION(g_object_ref(connection))) {
        g_socket_set_blocking(Socket(), FALSE);
    }

    GSocket* Socket() const { return g_socket_connection_get_socket(m_connection.get()); }

    /// Reads what there is and answers it; false when the client is to be let go.
    bool Serve(const ControlSocket::Answer& answer) {
        std::array<char, longestLine> bytes = {};
        GError* error = nullptr;
        const gssize count = g_socket_receive(Socket(), bytes.data(), bytes.size(), nullptr, &error);
        if (count > 0) {
            m_begun.append(bytes.data(), static_cast<std::size_t>(count));
            return AnswerLines(answer) && m_begun.size() <= longestLine;
        }
        const bool later = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK) != 0;
        g_clear_error(&error);
        return later;
    }

private:
    bool AnswerLines(const ControlSocket::Answer& answer) {
        for (std::size_t end = m_begun.find('\n'); end != std::string::npos; end = m_begun.find('\n')) {
            std::string line = m_begun.substr(0, end);
            m_begun.erase(0, end + 1);
            if (line.ends_with('\r'))
                line.pop_back();
            if (line.size() > longestLine || !Send(answer(line) + "\n"))
                return false;
        }
        return true;
    }

    /// At once, or not at all.
    bool Send(const std::string& text) const {
        return g_socket_send(Socket(), text.data(), text.size(), nullptr, nullptr) ==
               static_cast<gssize>(text.size());
    }

    Reference<GSocketConnection> m_connection;
    std::string m_begun;
};

/// A file left behind by a process that is gone; one that somebody listens to is not.
void RemoveAbandoned(const std::string& path, GSocketAddress* address) {
    if (g_file_test(path.c_str(), G_FILE_TEST_EXISTS) == 0 ||
        g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR) != 0)
        return;
    const Reference<GSocketClient> client(g_socket_client_new());
    GError* error = nullptr;
    GSocketConnection* const connection =
        g_socket_client_connect(client.get(), G_SOCKET_CONNECTABLE(address), nullptr, &error);
    if (connection != nullptr) {
        g_object_unref(connection);
        return;
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_REFUSED) != 0)
        g_remove(path.c_str());
    g_error_free(error);
}

} // namespace

class ControlSocket::Service {
public:
    Service(std::string path, Answer answer)
        : m_path(std::move(path)), m_answer(std::move(answer)), m_service(g_socket_service_new()) {
        Listen();
        g_signal_connect(m_service.get(), "incoming", G_CALLBACK(OnClient), this);
        g_socket_service_start(m_service.get());
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() {
        g_socket_service_stop(m_service.get());
        g_socket_listener_close(G_SOCKET_LISTENER(m_service.get()));
        for (const Place& place : m_clients) {
            g_source_destroy(place.source);
            g_source_unref(place.source);
        }
        g_remove(m_path.c_str());
    }

private:
    struct Place {
        Service* service;
        Client client;
        GSource* source;
    };

    void Listen() {
        const Reference<GSocketAddress> address(g_unix_socket_address_new(m_path.c_str()));
        RemoveAbandoned(m_path, address.get());
        GError* error = nullptr;
        if (g_socket_listener_add_address(G_SOCKET_LISTENER(m_service.get()), address.get(),
                                          G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr,
                                          &error) != 0)
            return;
        const std::string reason = error->message;
        g_error_free(error);
        throw std::runtime_error("cannot listen at '" + m_path + "': " + reason);
    }

    static gboolean OnClient(GSocketService* /*service*/, GSocketConnection* connection, GObject* /*source*/,
                             gpointer self) {
        static_cast<Service*>(self)->Add(connection);
        return TRUE;
    }

    void Add(GSocketConnection* connection) {
        if (m_clients.size() >= mostClients)
            return; // closes it
        m_clients.push_back({this, Client(connection), nullptr});
        Place& place = m_clients.back();
        place.source = g_socket_create_source(place.client.Socket(), G_IO_IN, nullptr);
        const GSocketSourceFunc onBytes = OnBytes;
        g_source_set_callback(place.source, G_SOURCE_FUNC(onBytes), &place, nullptr);
        g_source_attach(place.source, g_main_context_get_thread_default());
    }

    static gboolean OnBytes(GSocket* /*socket*/, GIOCondition /*condition*/, gpointer data) {
        auto* const place = static_cast<Place*>(data);
        Service* const service = place->service;
        if (place->client.Serve(service->m_answer))
            return G_SOURCE_CONTINUE;
        g_source_unref(place->source);
        service->m_clients.remove_if([place](const Place& other) { return &other == place; });
        return G_SOURCE_REMOVE;
    }

    std::string m_path;
    Answer m_answer;
    Reference<GSocketService> m_service;
    std::list<Place> m_clients;
};

ControlSocket::ControlSocket(std::string path, Answer answer)
    : m_service(std::make_unique<Service>(std::move(path), std::move(answer))) {}

ControlSocket::~ControlSocket() = default;

} // namespace tessaro
