#include "TWCore/Provider/SurveyDigest.h"

namespace tw {

namespace {

/// FNV-1a, with its bits mixed at the end: sums of plain FNV values of similar texts would meet too often.
class Digest {
public:
    void add(std::string_view text)
    {
        for (auto const byte : text)
            addByte(static_cast<unsigned char>(byte));
        addByte(0); // no text has it, so that no two texts run into one
    }

    void add(std::uint64_t number)
    {
        for (auto shift = 0; shift < 64; shift += 8)
            addByte(static_cast<unsigned char>(number >> shift));
    }

    std::uint64_t value() const
    {
        // The finaliser of splitmix64.
        auto mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }

private:
    void addByte(unsigned char byte) { state = (state ^ byte) * 0x100000001B3U; }

    std::uint64_t state = 0xCBF29CE484222325U;
};

} // namespace

void addToSurvey(Survey::Part &part, SurveyNode const &node, Survey::Detail detail)
{
    auto const isFile = node.kind == EntryKind::file;
    ++(node.kind == EntryKind::directory ? part.folders : part.files);
    part.bytes += isFile ? node.size : 0;

    Digest shape;
    shape.add(node.path);
    shape.add(static_cast<std::uint64_t>(node.kind));
    // File systems have their own ideas of the size of a folder.
    shape.add(static_cast<std::uint64_t>(isFile ? node.size : 0));
    shape.add(node.kind == EntryKind::symlink ? node.target : "");
    part.shape += shape.value();
    auto const count = static_cast<std::size_t>(part.files + part.folders);
    if (detail == Survey::Detail::sums || count > Survey::mostNodes)
        part.nodes = {};
    else if (detail == Survey::Detail::nodes)
        part.nodes.push_back(shape.value());
    else if (node.kind != EntryKind::directory) {
        shape.add(isFile ? node.mtime.substr(0, node.mtime.find('.')) : "");
        part.nodes.push_back(shape.value());
    }

    Digest times;
    times.add(node.path);
    times.add(node.mtime);
    part.times += times.value();
}

} // namespace tw
