// A file, plain or packed by gzip, that is written beside its target and replaces the target only when it is complete.
#pragma once

#include "kalvo/files/text/descriptor.h"
#include "kalvo/files/text/pacer.h"

#include <memory>
#include <string>
#include <string_view>

namespace klv {

class OutputFile {
public:
    // A target that exists keeps its permissions, and a link to it stays a link. Devices and pipes are
    // refused: half a file written there could not be taken back.
    OutputFile (const std::string& path, bool packed, Pacer& pacer);
    OutputFile (const OutputFile&) = delete;
    OutputFile& operator= (const OutputFile&) = delete;
    ~OutputFile ();    // an incomplete file is removed

    void put (std::string_view text);

    // Replaces the target. Faults of the disk show in writing and closing; a power cut may lose the file.
    void commit ();

private:
    class Packer;

    void flush (bool last);
    void write (const void* bytes, std::size_t size) const;
    [[noreturn]] void fail (const char* reason) const;

    static constexpr std::size_t block = std::size_t{1} << 18;

    Pacer& pacer_;
    std::string target_;
    std::string temporary_;
    Descriptor file_;
    std::unique_ptr<Packer> packer_;
    std::unique_ptr<char[]> buffer_ = std::make_unique<char[]> (block);
    std::size_t used_ = 0;
};

}
