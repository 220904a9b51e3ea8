// Scratch directories on the file system.
#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace kit {

Scratch::Scratch()
{
    std::string made = testing::TempDir() + "vxXXXXXX";
    if (!mkdtemp(made.data())) ADD_FAILURE() << "no scratch directory " << made;
    dir_ = fs::canonical(made).string();
}

Scratch::~Scratch()
{
    std::error_code ignored;
    fs::remove_all(dir_, ignored);
}

std::string Scratch::write(std::string_view relative, std::string_view bytes) const
{
    fs::create_directories(fs::path(path(relative)).parent_path());
    write_file(path(relative), bytes);
    return path(relative);
}

std::string Scratch::read(std::string_view relative) const
{
    return read_file(path(relative));
}

void Scratch::make_dir(std::string_view relative) const
{
    fs::create_directories(path(relative));
}

bool Scratch::exists(std::string_view relative) const
{
    return fs::exists(fs::symlink_status(path(relative)));
}

Tree Scratch::tree(std::string_view below) const
{
    return read_tree(below.empty() ? dir_ : path(below));
}

void write_file(const std::string& path, std::string_view bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    EXPECT_TRUE(out) << "cannot write " << path;
}

bool full_device_is_there()
{
    return access("/dev/full", W_OK) == 0;
}

std::string read_file(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " << path;
    std::ostringstream bytes;
    if (in.peek() != std::ifstream::traits_type::eof()) bytes << in.rdbuf();
    return bytes.str();
}

Tree read_tree(const std::string& dir)
{
    Tree tree;
    for (const fs::directory_entry& e : fs::recursive_directory_iterator(dir)) {
        const std::string name = fs::path(e.path()).lexically_relative(dir).string();
        if (e.is_directory() && !e.is_symlink())
            tree[name + "/"];
        else
            tree[name] = e.is_regular_file() ? read_file(e.path().string()) : "";
    }
    return tree;
}

std::string names(const Tree& tree)
{
    std::string list;
    for (const auto& [name, bytes] : tree) list += name + "\n";
    return list;
}

} // namespace kit
