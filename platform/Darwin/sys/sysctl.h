#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/time.h>
#include <sys/types.h>

#define CTL_KERN 1
#define CTL_HW 6

#define KERN_PROC 14
#define KERN_PROC_ALL 0
#define KERN_PROC_PID 1

#define HW_MACHINE 1 ///< text, the processor's kind: "x86_64", "arm64"
#define HW_MODEL 2 ///< text, the maker's name of the computer
#define HW_NCPU 3 ///< processors in use
#define HW_L1ICACHESIZE 17 ///< bytes, as the other caches
#define HW_L1DCACHESIZE 18
#define HW_L2CACHESIZE 20
#define HW_L3CACHESIZE 22
#define HW_MEMSIZE 24 ///< bytes

#define MAXCOMLEN 16

/// kp_proc.p_stat
#define SIDL 1
#define SRUN 2
#define SSLEEP 3
#define SSTOP 4
#define SZOMB 5

/// One process in the kernel's table. Members are where a 64-bit Mac's programs expect them, also those that read the
/// record as bytes; what the host does not tell is zero.
struct kinfo_proc {
    struct {
        struct timeval p_starttime;
        char p_unused1[20];
        char p_stat;
        char p_unused2[3];
        pid_t p_pid;
        char p_unused3[198];
        signed char p_nice;
        char p_comm[MAXCOMLEN + 1]; ///< short name of the program, zero-terminated
        char p_unused4[36];
    } kp_proc;
    struct {
        char e_unused1[96];
        struct {
            uid_t p_ruid;
            uid_t p_svuid;
            gid_t p_rgid;
            gid_t p_svgid;
        } e_pcred;
        char e_unused2[12];
        struct {
            uid_t cr_uid; ///< the one whose rights it has
        } e_ucred;
        char e_unused3[136];
        pid_t e_ppid;
        pid_t e_pgid;
        char e_unused4[80];
    } kp_eproc;
};

#ifdef __cplusplus
extern "C" {
#endif

/// Tells about the system. Known names: CTL_KERN, KERN_PROC, KERN_PROC_ALL, 0 (the fourth may be left out): every process
/// that may be seen, one kinfo_proc each; CTL_KERN, KERN_PROC, KERN_PROC_PID, a process: that one, or nothing; CTL_HW and
/// one of the numbers above. Numbers take 4 bytes where the room is 4, else 8.
/// @param name the numbers, which are not changed. @param namelen how many.
/// @param oldp receives the value, text with its final zero byte; null to learn the size only, which for processes is
/// more than they need at the moment.
/// @param oldlenp in: the room at oldp in bytes; out: the bytes stored, or with oldp null the value's size.
/// Null only if oldp is.
/// @param newp must be null @param newlen must be 0: nothing known here can be set.
/// @return 0, or -1 with errno: ENOENT, no such name, or the host does not tell; ENOMEM, the room is short and was filled
/// as far as the value can be cut; ERANGE, the room is 4 bytes and the number needs more; EFAULT, a null where there may be
/// none; EPERM, newp was not null.
int sysctl(int* name, u_int namelen, void* oldp, size_t* oldlenp, void* newp, size_t newlen);

/// The same by names: "kern.osproductversion" (text: ProductVersion of the start-up volume's SystemVersion.plist),
/// "hw.machine", "hw.model", "hw.ncpu", "hw.memsize", "hw.l1icachesize", "hw.l1dcachesize", "hw.l2cachesize",
/// "hw.l3cachesize".
int sysctlbyname(const char* name, void* oldp, size_t* oldlenp, void* newp, size_t newlen);

#ifdef __cplusplus
}
#endif
