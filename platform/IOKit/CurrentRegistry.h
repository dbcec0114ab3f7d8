#pragma once

#include <Host/Descriptor.h>
#include <Host/HostTree.h>
#include <IOKit/Registry.h>

#include <memory>
#include <string>

namespace iokit {

/// Where the current registry comes from.
class Source {
public:
    virtual ~Source() = default;

    /// What is another text whenever there may be another registry.
    virtual std::string version() = 0;
    virtual std::shared_ptr<const Registry> read() = 0;
};

/// This host, as it is at the time.
class HostSource : public Source {
public:
    explicit HostSource(HostTree host = HostTree())
        : fHost(std::move(host))
    {
    }
    std::string version() override;
    /// Entries of two readings never have the same number, so that one kept too long cannot mean another disk.
    std::shared_ptr<const Registry> read() override;

private:
    HostTree fHost;
    Descriptor fNews; ///< the kernel's count of them, kept open because it is read for every question
    uint64_t fNextID = Registry::kFirstID;
};

/// A registry that does not change.
class FixedSource : public Source {
public:
    explicit FixedSource(Registry registry)
        : fRegistry(std::make_shared<const Registry>(std::move(registry)))
    {
    }
    std::string version() override { return ""; }
    std::shared_ptr<const Registry> read() override { return fRegistry; }

private:
    std::shared_ptr<const Registry> fRegistry;
};

/// From now on the registry of this program comes from here. Until it is called, that is a HostSource.
void UseSource(std::unique_ptr<Source> source);

/// The registry as the source has it now; read anew only when the source's version is another. Never null. From any thread.
std::shared_ptr<const Registry> CurrentRegistry();

}
