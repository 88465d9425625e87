// The bytes of a file, unpacked when they are gzip's, whatever the file's name.
#pragma once

#include "kalvo/files/text/descriptor.h"

#include <memory>
#include <string>

namespace klv {

class InputFile {
public:
    // Only regular files are read: a pipe or terminal without a writer would block for ever.
    explicit InputFile (const std::string& path);
    ~InputFile ();

    // Copies up to `size` of the next bytes to `at` and returns their number; 0 at the end of the file.
    std::size_t read (char* at, std::size_t size);

private:
    class Unpacker;

    std::size_t read_raw (void* at, std::size_t size) const;
    bool begins_packed () const;

    Descriptor file_;
    std::unique_ptr<Unpacker> unpacker_;    // null for a plain file
};

}
