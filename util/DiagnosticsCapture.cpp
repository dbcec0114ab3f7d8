#include "util/DiagnosticsCapture.h"

#include "util/ChildProcess.h"
#include "util/Files.h"

#include <Host/HostPath.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool Capture(const char* path, ToolCall call)
{
    if (path == nullptr || !RemoveFileOrDirectory(path))
        return false;
    const int file = open(HostPath(path).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0)
        return false;
    call.prepare = [file] { MakeStandardOutput(file); };
    const ChildEnd end = RunTool(call);
    close(file);
    return end.isKnown() && end.status == 0;
}

}

bool CaptureIORegToFile(const char* path)
{
    return Capture(path, { "/usr/sbin/ioreg", { "ioreg", "-l", "-x", "-w", "256" } });
}

bool CaptureKextStatToFile(const char* path)
{
    return Capture(path, { "/usr/sbin/kextstat", { "kextstat" } });
}

bool CaptureDiskUtilToFile(const char* path)
{
    return Capture(path, { "/usr/sbin/diskutil", { "diskutil", "list" } });
}

bool CaptureSleepPreferencesToFile(const char* path)
{
    return Capture(path, { "/usr/bin/pmset", { "pmset", "-g" } });
}

bool CaptureSystemProfilerToFile(const char* path)
{
    return Capture(path,
        { "/usr/sbin/system_profiler",
            { "system_profiler", "-xml", "SPHardwareDataType", "SPPowerDataType", "SPMemoryDataType",
                "SPDisplaysDataType", "SPPCIDataType", "SPThunderboltDataType", "SPNVMeDataType",
                "SPFireWireDataType", "SPFibreChannelDataType", "SPParallelSCSIDataType", "SPSASDataType",
                "SPSerialATADataType", "SPUSBDataType", "SPStorageDataType", "SPSoftwareDataType",
                "SPExtensionsDataType", "SPApplicationsDataType", "SPLogsDataType",
                "SPDiagnosticsDataType" } });
}
