// How many dispatch queues there are.
#ifndef OSTREL_TESTS_SUPPORT_AVFOUNDATION_QUEUES_H
#define OSTREL_TESTS_SUPPORT_AVFOUNDATION_QUEUES_H

namespace ostrel::support::avfoundation {

int liveQueues();

} // namespace ostrel::support::avfoundation

#endif
