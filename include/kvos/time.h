// Clocks and dates: monotonic counters, the wall clock, the time of day, and one formatter of dates and times.
//
// Every call may be made from any thread, and none sends a message. Local time follows the environment's TZ, which is
// read anew by each call.
#ifndef KVOS_TIME_H
#define KVOS_TIME_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

extern KVUTIL_API const char *const garszDays[7];    /* "Sunday" to "Saturday", by weekday from 0 */
extern KVUTIL_API const char *const garszMonths[12]; /* "January" to "December", by month from 0 */

/* Bits of dwFlags of the formatter. The first group that has a bit set decides, from top to bottom. */
#define KVTIME_MILLI 0x80u        /* 2024-03-09, T08:05:07.123 */
#define KVTIME_MICRO 0x100u       /* 2024-03-09, T08:05:07.123456 */
#define KVTIME_NANO 0x200u        /* 2024-03-09, T08:05:07.123456789 */
#define KVTIME_FIXED_ZONE 0x40u   /* 2024-03-09, T08:05:07.000+05:00 */
#define KVTIME_UNDERSCORES 0x10u  /* 9_3_2024, 08_05_07 */
#define KVTIME_DASHES 0x20u       /* 9-2-2024, 08-05-07 */
#define KVTIME_YEAR_FIRST 0x8000u /* with the two forms above: 2024_3_9 and 2024-3-9 */
#define KVTIME_24_HOURS 0x1u      /* Saturday, March 9, 2024, 08:05:07; without it 8:05:07AM */
#define KVTIME_UTC 0x10000u       /* with every form: UTC in place of local time */

/**
 * Monotonic milliseconds, cut to 32 bits: they wrap after about 49.7 days, so compare differences of 32-bit values. The
 * clock starts at no particular moment and stands still while the machine sleeps.
 */
KVUTIL_API uint32_t kvOSGetMs(void);

/** Monotonic microseconds, by the same clock. */
KVUTIL_API uint64_t kvOSGetMicro(void);

/** Monotonic nanoseconds, by the same clock; computed in double precision, so that the last digits round. */
KVUTIL_API uint64_t kvOSGetNano(void);

/** The wall clock: milliseconds since 1970 (UTC). It steps when the clock is set. */
KVUTIL_API uint64_t kvOSGetTimeMs(void);

/** The local time of day in milliseconds since midnight, in whole seconds: no finer clock is read. */
KVUTIL_API uint64_t kvOSGetTimeOfDayMs(void);

/** The local time of day in microseconds since midnight, in whole seconds. */
KVUTIL_API uint64_t kvOSGetTimeOfDayMicro(void);

/**
 * A stamp of the local time of day, in whole seconds.
 *
 * Meant: seconds count in nanoseconds, minutes and hours in microseconds: seconds * 1000000000 + minutes * 60000000 +
 * hours * 3600000000. It is not a time in nanoseconds, and not monotonic.
 */
KVUTIL_API uint64_t kvOSGetTimeOfDayNano(void);

/** The stamp of kvOSGetTimeOfDayNano, of the present time of day in UTC. Meant: no clock of the network is asked. */
KVUTIL_API uint64_t kvOSGetTimePTPNano(void);

/**
 * The present local time in its fields; a null pointer leaves a field out.
 *
 * @param pwYear       the full year.
 * @param pwMonth      1 to 12; pwDay 1 to 31, pwHour 0 to 23, pwMinute 0 to 59, pwSecond 0 to 60.
 * @param pwMs         milliseconds of the second, 0 to 999.
 * @param pwDayOfWeek  0 (Sunday) to 6.
 * @return 0; 0xFFFFFFFF, with nothing written, if the time can't be broken down.
 */
KVUTIL_API uint32_t kvOSGetLocalTime(uint16_t *pwYear, uint16_t *pwMonth, uint16_t *pwDay, uint16_t *pwHour,
                                     uint16_t *pwMinute, uint16_t *pwSecond, uint16_t *pwMs, uint16_t *pwDayOfWeek);

/**
 * Seconds by which local time stands ahead of UTC now; negative west of it.
 *
 * The rule in force is looked up for the present fields of UTC, read as local time. Within the offset's length of a
 * change to or from daylight saving time the answer is therefore the other rule's.
 */
KVUTIL_API int32_t kvOSGetTimeZoneOffset(void);

/**
 * Writes a moment's date and time as text. The comments of the flags above show the forms.
 *
 * Meant: any mix of the first three flags takes the form with three digits. The fraction is 0 and the zone "+05:00" in
 * KVTIME_FIXED_ZONE, whatever they are. KVTIME_DASHES counts months from 0 unless KVTIME_YEAR_FIRST is set, while
 * KVTIME_UNDERSCORES counts them from 1. The 12-hour form knows no 12: 12:30:05 is "0:30:05PM", 00:30:05 "0:30:05AM".
 *
 * @param nSeconds    since 1970 (UTC), negative before.
 * @param pDate       null, or receives the date: room for 64 bytes is enough for every form.
 * @param pTime       null, or receives the time, likewise.
 * @param dwFraction  what the forms with a fraction print behind the dot, with leading zeros and in the unit the form
 *                    names: nothing is converted. From 0x80000000 on it prints as a negative number but with
 *                    KVTIME_NANO.
 * @param dwFlags     KVTIME_... bits; others are ignored.
 * @return 0, also with both buffers null; 0xFFFFFFFF, with nothing written, for a moment whose year does not fit.
 */
KVUTIL_API uint32_t kvOSGetEpochDateTimeString(int64_t nSeconds, char *pDate, char *pTime, uint32_t dwFraction,
                                               uint32_t dwFlags);

/**
 * kvOSGetEpochDateTimeString for the present moment, with its fraction in the unit that the flags ask for: microseconds
 * with KVTIME_MICRO alone, microseconds times 1000 with KVTIME_NANO alone, milliseconds otherwise.
 *
 * @param pDate    null, or receives the date: room for 64 bytes is enough for every form.
 * @param pTime    null, or receives the time, likewise.
 * @param dwFlags  KVTIME_... bits; others are ignored.
 * @return 0, also with both buffers null; 0xFFFFFFFF, with nothing written, if the time can't be broken down.
 */
KVUTIL_API uint32_t kvOSGetDateTimeString(char *pDate, char *pTime, uint32_t dwFlags);

#ifdef __cplusplus
}
#endif

#endif
