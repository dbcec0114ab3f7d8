#pragma once

#include <IOKit/Nvram.h>

#include <functional>

namespace iokit {

/// Variables in a property list, a dictionary of strings and data. It is replaced as a whole by one program at a time. A damaged
/// one stays as it is: nothing is kept beside or instead of it.
class NvramFile : public Nvram {
public:
    /// @param path host path. A file that is missing has no variables; the folders above are made when it gets one.
    explicit NvramFile(std::string path)
        : fPath(std::move(path))
    {
    }

    std::string version() const override;
    int read(NvramVariables& variables) const override;
    int clear() override;

private:
    int change(const std::string& name, const std::optional<std::string>& value) override;
    int update(const std::function<int(NvramVariables&)>& edit);
    int write(const NvramVariables& variables) const;

    std::string fPath;
};

}
