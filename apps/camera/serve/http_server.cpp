#include "apps/camera/serve/http_server.h"

#include "apps/camera/serve/live_stream.h"
#include "apps/camera/serve/page.h"
#include "apps/camera/serve/request_rules.h"
#include "apps/common/failure.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

const unsigned MOST_CONNECTIONS = 64;
const unsigned IDLE_SECONDS = 10;            // without a byte in either direction
const std::size_t CONNECTION_MEMORY = 65536; // bytes
const std::size_t BLOCK = 32768;             // of a live picture that is sent at a time
// What the system keeps for a client that is slow to read is old when it arrives.
const int SEND_BUFFER = 65536;
const char JPEG_TYPE[] = "image/jpeg";

int64_t monotonicNow() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// A socket that is closed unless somebody takes it.
class Socket {
public:
    // Not every system makes one with these flags in one step.
    Socket() : descriptor_(socket(AF_INET, SOCK_STREAM, 0)) {
        fcntl(descriptor_, F_SETFD, FD_CLOEXEC);
        fcntl(descriptor_, F_SETFL, O_NONBLOCK);
    }
    ~Socket() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool listen(uint16_t port) {
        const int yes = 1;
        setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        setsockopt(descriptor_, SOL_SOCKET, SO_SNDBUF, &SEND_BUFFER, sizeof SEND_BUFFER);
        sockaddr_in address = loopback(port);
        return bind(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
               ::listen(descriptor_, SOMAXCONN) == 0;
    }
    uint16_t port() const {
        sockaddr_in address = loopback(0);
        socklen_t length = sizeof address;
        getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &length);
        return ntohs(address.sin_port);
    }
    int descriptor() const { return descriptor_; }
    void release() { descriptor_ = -1; }

private:
    static sockaddr_in loopback(uint16_t port) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    int descriptor_;
};

// One that the library frees when nothing uses it any more.
using Response = std::unique_ptr<MHD_Response, void (*)(MHD_Response*)>;

Response own(MHD_Response* response) {
    if (response) {
        MHD_add_response_header(response, "Cache-Control", "no-store");
        MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
        MHD_add_response_header(response, "Referrer-Policy", "no-referrer");
        MHD_add_response_header(response, "Cross-Origin-Resource-Policy", "same-origin");
        MHD_add_response_header(
            response, "Content-Security-Policy",
            "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
            "img-src 'self' data:; base-uri 'none'; form-action 'none'; "
            "frame-ancestors 'none'");
    }
    return Response(response, MHD_destroy_response);
}

Response bodyResponse(const std::string& body, const char* type) {
    Response response = own(
        MHD_create_response_from_buffer(body.size(), const_cast<char*>(body.data()), MHD_RESPMEM_MUST_COPY));
    if (response)
        MHD_add_response_header(response.get(), "Content-Type", type);
    return response;
}

MHD_Result answer(MHD_Connection* connection, unsigned status, const Response& response) {
    return response ? MHD_queue_response(connection, status, response.get()) : MHD_NO;
}

MHD_Result refuse(MHD_Connection* connection, unsigned status, const std::string& why) {
    const Response response = bodyResponse(why + "\n", "text/plain; charset=utf-8");
    if (response && status == MHD_HTTP_METHOD_NOT_ALLOWED)
        MHD_add_response_header(response.get(), "Allow", "GET, HEAD");
    return answer(connection, status, response);
}

std::string headerOf(MHD_Connection* connection, const char* name) {
    const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value ? value : "";
}

bool hasBody(MHD_Connection* connection) {
    const std::string length = headerOf(connection, "Content-Length");
    return (!length.empty() && length != "0") || !headerOf(connection, "Transfer-Encoding").empty();
}

// What is kept of a request from one call of its handler to the next.
struct Request {
    std::unique_ptr<Seat> seat; // of a snapshot that waits for its picture
};

} // namespace

class HttpServer::Impl {
public:
    Impl(Audience& audience, uint16_t port, const std::string& name, const Size& size);
    ~Impl();

    uint16_t port() const { return port_; }

private:
    static MHD_Result handle(void* self, MHD_Connection* connection, const char* path, const char* method,
                             const char* version, const char* upload, std::size_t* uploaded, void** state);
    static void completed(void* self, MHD_Connection* connection, void** state,
                          MHD_RequestTerminationCode why);

    MHD_Result reply(MHD_Connection* connection, const std::string& path, bool head, Request& request);
    MHD_Result sendStream(MHD_Connection* connection);
    MHD_Result sendSnapshot(MHD_Connection* connection, Request& request);

    Audience& audience_;
    std::string name_;
    Size size_;
    uint16_t port_ = 0;
    MHD_Daemon* daemon_ = nullptr;
};

HttpServer::Impl::Impl(Audience& audience, uint16_t port, const std::string& name, const Size& size)
    : audience_(audience), name_(name), size_(size) {
    Socket socket;
    if (!socket.listen(port))
        throw Failure(EXIT_CANNOT_OPEN, "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " +
                                            std::strerror(errno) + ": choose another --port");
    port_ = socket.port();
    // With epoll the library notices only by the time limit that a client has gone in the middle of a
    // request.
    daemon_ = MHD_start_daemon(
        MHD_USE_POLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, handle, this,
        MHD_OPTION_LISTEN_SOCKET, socket.descriptor(), MHD_OPTION_CONNECTION_LIMIT, MOST_CONNECTIONS,
        MHD_OPTION_CONNECTION_TIMEOUT, IDLE_SECONDS, MHD_OPTION_CONNECTION_MEMORY_LIMIT, CONNECTION_MEMORY,
        MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_NOTIFY_COMPLETED, completed, this, MHD_OPTION_END);
    if (!daemon_)
        throw Failure(EXIT_INTERNAL, "the HTTP server does not start");
    socket.release();
}

// Nobody may be suspended when the daemon stops.
HttpServer::Impl::~Impl() {
    audience_.close();
    MHD_stop_daemon(daemon_);
}

void HttpServer::Impl::completed(void*, MHD_Connection*, void** state, MHD_RequestTerminationCode) {
    delete static_cast<Request*>(*state);
    *state = nullptr;
}

MHD_Result HttpServer::Impl::handle(void* self, MHD_Connection* connection, const char* path,
                                    const char* method, const char*, const char*, std::size_t* uploaded,
                                    void** state) {
    Impl& server = *static_cast<Impl*>(self);
    try {
        const std::string wanted = method;
        if (!isOwnHost(headerOf(connection, "Host"), server.port_))
            return refuse(connection, MHD_HTTP_FORBIDDEN, "this is not the name of this server");
        if (!isOwnSite(headerOf(connection, "Sec-Fetch-Site")))
            return refuse(connection, MHD_HTTP_FORBIDDEN, "another site may not look");
        if (wanted != MHD_HTTP_METHOD_GET && wanted != MHD_HTTP_METHOD_HEAD)
            return refuse(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "there is nothing to change here");
        if (hasBody(connection))
            return refuse(connection, MHD_HTTP_BAD_REQUEST, "a question has no body");
        if (*uploaded > 0)
            return MHD_NO;
        if (*state)
            return server.reply(connection, path, wanted == MHD_HTTP_METHOD_HEAD,
                                *static_cast<Request*>(*state));
        *state = new Request; // only what comes after the headers may be suspended
        return MHD_YES;
    } catch (const std::bad_alloc&) {
        return MHD_NO;
    }
}

MHD_Result HttpServer::Impl::reply(MHD_Connection* connection, const std::string& path, bool head,
                                   Request& request) {
    if (path == "/")
        return answer(connection, MHD_HTTP_OK, bodyResponse(pageHtml(name_), "text/html; charset=utf-8"));
    if (path == "/style.css")
        return answer(connection, MHD_HTTP_OK, bodyResponse(PAGE_STYLE, "text/css; charset=utf-8"));
    if (path == "/page.js")
        return answer(connection, MHD_HTTP_OK, bodyResponse(PAGE_SCRIPT, "text/javascript; charset=utf-8"));
    if (path == "/status.json")
        return answer(connection, MHD_HTTP_OK,
                      bodyResponse(statusJson(audience_.facts(), size_, monotonicNow()), "application/json"));
    const bool stream = path == "/stream.mjpeg";
    if (!stream && path != "/snapshot.jpg")
        return refuse(connection, MHD_HTTP_NOT_FOUND, "there is nothing here");
    if (head) // who asks for the headers alone does not look
        return answer(connection, MHD_HTTP_OK,
                      bodyResponse("", stream ? LiveStream::CONTENT_TYPE : JPEG_TYPE));
    return stream ? sendStream(connection) : sendSnapshot(connection, request);
}

MHD_Result HttpServer::Impl::sendStream(MHD_Connection* connection) {
    const auto read = [](void* stream, uint64_t, char* buffer, std::size_t room) -> ssize_t {
        try {
            const long count = static_cast<LiveStream*>(stream)->read(buffer, room);
            return count < 0 ? MHD_CONTENT_READER_END_OF_STREAM : count;
        } catch (const std::bad_alloc&) {
            return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    };
    const auto free = [](void* stream) { delete static_cast<LiveStream*>(stream); };
    auto stream = std::make_unique<LiveStream>(audience_, connection);
    const Response response =
        own(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, BLOCK, read, stream.get(), free));
    if (!response)
        return MHD_NO;
    stream.release();
    MHD_add_response_header(response.get(), "Content-Type", LiveStream::CONTENT_TYPE);
    return answer(connection, MHD_HTTP_OK, response);
}

// Comes here again when the connection was suspended and there is a picture.
MHD_Result HttpServer::Impl::sendSnapshot(MHD_Connection* connection, Request& request) {
    if (!request.seat)
        request.seat = std::make_unique<Seat>(audience_, connection);
    LivePicturePointer picture;
    const Audience::Next next = request.seat->next(picture);
    if (next == Audience::Next::Later)
        return MHD_YES;
    request.seat.reset(); // it has seen it, however long the sending takes
    if (next == Audience::Next::Over)
        return refuse(connection, MHD_HTTP_SERVICE_UNAVAILABLE, "no picture: " + audience_.facts().why);
    return answer(connection, MHD_HTTP_OK, bodyResponse(picture->jpeg, JPEG_TYPE));
}

HttpServer::HttpServer(Audience& audience, uint16_t port, const std::string& name, const Size& size)
    : d_(std::make_unique<Impl>(audience, port, name, size)) {}

HttpServer::~HttpServer() = default;

uint16_t HttpServer::port() const {
    return d_->port();
}

} // namespace ostrel::apps::cli
