// The pictures for one client, as a body of multipart/x-mixed-replace: each part takes the place of the last.
#ifndef OSTREL_APPS_CAMERA_SERVE_LIVE_STREAM_H
#define OSTREL_APPS_CAMERA_SERVE_LIVE_STREAM_H

#include "apps/camera/serve/seat.h"

namespace ostrel::apps::cli {

// Belongs to the server's thread. While there is no picture that the client has not had, its connection is
// suspended; whoever takes long to read gets the newest one next.
class LiveStream {
public:
    static const char CONTENT_TYPE[];

    LiveStream(Audience& audience, MHD_Connection* connection) : seat_(audience, connection) {}

    // So many bytes more, 0 when the connection was suspended, below 0 at the end.
    long read(char* buffer, std::size_t room);

private:
    bool begin();

    Seat seat_;
    LivePicturePointer picture_;
    std::string head_; // in front of the picture
    std::size_t sent_ = 0;
    bool first_ = true;
    bool over_ = false;
};

} // namespace ostrel::apps::cli

#endif
