// Grand Central Dispatch by its published names: what the library uses of it, in the forms that need no
// blocks.
#ifndef OSTREL_TESTS_AVFOUNDATION_DISPATCH_H
#define OSTREL_TESTS_AVFOUNDATION_DISPATCH_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_queue_attr_s* dispatch_queue_attr_t;
typedef void (*dispatch_function_t)(void* context);
#define DISPATCH_QUEUE_SERIAL ((dispatch_queue_attr_t)0)

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
void dispatch_retain(dispatch_queue_t queue);
void dispatch_release(dispatch_queue_t queue);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);

#ifdef __cplusplus
}
#endif

#endif
