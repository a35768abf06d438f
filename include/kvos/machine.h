// How busy the machine is, and what it is.
//
// Some calls measure; others give a fixed answer in place of a measurement, and are meant to. Unless a call says
// otherwise it sends no message, may be made from any thread, and leaves errno as the system left it. A null pointer
// gives 0xFFFFFFFF with EINVAL and writes nothing.
#ifndef KVOS_MACHINE_H
#define KVOS_MACHINE_H

#include <stdint.h>

#include "kvos/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What a graphics processor's load is where none tells it. */
#define KVGPU_UNKNOWN 0xFFFFFFFFu

/**
 * The load of all processors together since the last call of this or of the two calls below, in percent; the first
 * call of a process measures since the machine's start. Time spent waiting for a disk counts as idle.
 *
 * Meant: 30 where no tick has gone by since the last call, which is too soon to measure. Ticks come some 100 times a
 * second. One last call is kept for the whole process: two threads that call this see shorter spans each.
 *
 * @return the percentage; an error number of the system where it tells no ticks, which can't be told from a percentage.
 *
 * Messages: to standard error alone, "host_processor_info error:" and the reason, where the system tells no ticks.
 */
KVUTIL_API uint32_t GetCpuUsage(void);

/** The same as GetCpuUsage, and of the whole machine; meant: not of the process. */
KVUTIL_API uint32_t GetCpuUsageProc(void);

/** The same as GetCpuUsage. */
KVUTIL_API uint32_t GetSystemCpuUsage(void);

/**
 * The memory that is in use. What the system keeps of files, and would give up for a program, counts as in use.
 *
 * @param pdwProcess  receives the part of the machine's memory in which this process's pages lie, in percent; 0 where
 *                    the system does not tell how much memory there is. Meant: untouched where it does not tell the
 *                    process's.
 * @param pdwSystem   receives the part that is in use at all, in percent; untouched where the system tells nothing.
 * @param pqwTotal    receives the machine's memory in bytes, whatever of it a container may use; 0 likewise.
 * @return 0, whatever failed.
 */
KVUTIL_API uint32_t GetMemoryUsage(uint32_t *pdwProcess, uint32_t *pdwSystem, uint64_t *pqwTotal);

/** The same as getGpuUsageApple. */
KVUTIL_API uint32_t GetGpuUsage(void);

/**
 * The load of the first graphics processor whose driver tells it, in percent. The name is one system's, the call is
 * for all.
 *
 * Meant: a figure that is no percentage, 101 and more or below 0, is divided by 10,000,000, unsigned in 64 bits, and
 * the low 32 bits of that are the answer. So it is with a driver that has statistics but none of the three figures
 * looked for: it answers 0x7F29ABCA.
 *
 * @return the percentage; KVGPU_UNKNOWN where there is no such processor. On Linux a vendor's library that was not
 * there at the first call is not looked for again.
 */
KVUTIL_API uint32_t getGpuUsageApple(void);

/**
 * The number of processors, and at most 24; 2 where the system does not tell.
 *
 * @param dwFlag  bit 0 set: the logical ones. Clear: the cores, which are taken to be half as many from 4 logical ones
 *                on; meant: nobody is asked.
 *
 * Messages: with the first call of the process, "CPU:  Actual Cores=%d, Virtual Cores=%d Physical Memory : %3.2f Gb".
 *           Meant: the memory in it is always 2.00.
 */
KVUTIL_API uint32_t kvOSGetNumCpu(uint32_t dwFlag);

/** Always 2048, in megabytes: no measurement. */
KVUTIL_API uint32_t kvOSGetMemSize(void);

/** Always 2400, in megahertz: no measurement. */
KVUTIL_API uint32_t kvOSGetCpuSpeed(void);

/**
 * The name of this machine in its network.
 *
 * @param pName  receives it; room for 128 bytes.
 * @return 0; 0xFFFFFFFF for null, and with an empty text where the system has no name that fits.
 */
KVUTIL_API uint32_t kvOSGetComputerName(char *pName);

/** Stores '~' and returns 0: no drives are looked for. */
KVUTIL_API uint32_t FindLastPhysicalDrive(char *pDrive);

/** Stores 1 and returns 0: no drives are looked for. */
KVUTIL_API uint32_t FindRecordDrives(uint32_t *pdwCount);

/**
 * The bytes that an ordinary user can still write on the volume on which a file or directory lies. The path is taken as
 * it stands, without the redirect.
 *
 * @return all ones on failure, with a null path too. Meant: zmwGetDiskTotalSpace has 0 there.
 */
KVUTIL_API uint64_t zmwGetDiskFreeSpace(const char *pPath);

/** The bytes that the same volume has in all; meant: 0 on failure, with a null path too (EINVAL). */
KVUTIL_API uint64_t zmwGetDiskTotalSpace(const char *pPath);

/** 1 if the path lies on a volume whose type has the number of FAT, 19780; else 0, with a null path too (EINVAL). */
KVUTIL_API uint32_t IsVolumeFAT(const char *pPath);

#ifdef __cplusplus
}
#endif

#endif
