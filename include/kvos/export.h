// The marks that exported declarations carry.
#ifndef KVOS_EXPORT_H
#define KVOS_EXPORT_H

/* Visible outside the shared library. Everything without it is hidden. */
#define KVUTIL_API __attribute__((visibility("default")))

/* Lets the compiler check the arguments against a printf format; both numbers count from 1. */
#define KVUTIL_PRINTF(format_index, first_argument) __attribute__((format(printf, format_index, first_argument)))

#endif
