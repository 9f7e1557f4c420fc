// One client's place in the audience.
#ifndef OSTREL_APPS_CAMERA_SERVE_SEAT_H
#define OSTREL_APPS_CAMERA_SERVE_SEAT_H

#include "apps/camera/serve/audience.h"

#include <microhttpd.h>

namespace ostrel::apps::cli {

// Its connection is suspended while there is nothing new to see. Belongs to the server's thread.
class Seat {
public:
    Seat(Audience& audience, MHD_Connection* connection)
        : audience_(audience), place_(audience.join([connection] { MHD_suspend_connection(connection); },
                                                    [connection] { MHD_resume_connection(connection); })) {}
    ~Seat() { audience_.leave(place_); }
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;

    Audience::Next next(LivePicturePointer& picture) { return audience_.next(place_, picture); }

private:
    Audience& audience_;
    Audience::Place place_;
};

} // namespace ostrel::apps::cli

#endif
