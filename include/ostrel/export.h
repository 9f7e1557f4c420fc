// Marks what the shared library exports; everything else in it is hidden.
#ifndef OSTREL_EXPORT_H
#define OSTREL_EXPORT_H

#define OSTREL_EXPORT __attribute__((visibility("default")))

#endif
