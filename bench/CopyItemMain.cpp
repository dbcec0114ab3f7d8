#include "install/CopyItem.h"

#include <cstdio>
#include <cstring>

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: copy_item FROM TO\n");
        return 2;
    }
    const int error = CopyItem(argv[1], argv[2]);
    if (error != 0)
        std::fprintf(stderr, "copy_item: %s\n", std::strerror(error));
    return error == 0 ? 0 : 1;
}
