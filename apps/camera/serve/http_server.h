// The pages of serve over HTTP.
#ifndef OSTREL_APPS_CAMERA_SERVE_HTTP_SERVER_H
#define OSTREL_APPS_CAMERA_SERVE_HTTP_SERVER_H

#include "apps/camera/serve/audience.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel::apps::cli {

// Answers on a thread of its own for as long as it lives. Only programs on this machine can connect.
class HttpServer {
public:
    // port: 0 for any that is free. name, size: of the camera and its pictures. Throws a Failure with
    // EXIT_CANNOT_OPEN when the port cannot be had.
    HttpServer(Audience& audience, uint16_t port, const std::string& name, const Size& size);
    ~HttpServer(); // ends every connection
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    uint16_t port() const;

private:
    class Impl;
    std::unique_ptr<Impl> d_;
};

} // namespace ostrel::apps::cli

#endif
