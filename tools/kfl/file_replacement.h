// Changes a file as a whole: whoever opens it finds the old bytes or the new ones.
//
//     FileReplacement file(path);
//     file.write(edited(file.bytes()));
//     check(file.newPath());
//     file.commit();
#ifndef KFL_TOOLS_KFL_FILE_REPLACEMENT_H
#define KFL_TOOLS_KFL_FILE_REPLACEMENT_H

#include <sys/stat.h>

#include <csignal>
#include <string>

namespace kfl_tool {

// The new bytes are written to a file in the same folder, with the mode and owner of the old one,
// which then takes the old one's name. Every failure ends the tool (command.h: fail), and the file
// is as it was. One replacement of a file waits for another.
class FileReplacement {
  public:
    // Follows symbolic links to the file, locks it and reads it.
    explicit FileReplacement(const char* path);
    // Removes what was not committed.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Where the file really is.
    const std::string& path() const { return path_; }
    // What is in it.
    const std::string& bytes() const { return bytes_; }

    // Puts the new bytes beside it, on the disk.
    void write(const std::string& bytes);
    // Where they are.
    const std::string& newPath() const { return newPath_; }
    // Makes them the file.
    void commit();

  private:
    void openLocked();
    void readOld();
    void takeOverRights(int descriptor) const;
    void syncFolder() const;
    std::string folder() const;
    [[noreturn]] void failNotWritten() const;

    // As the caller called it, for messages.
    std::string name_;
    std::string path_;
    std::string newPath_;
    std::string bytes_;
    int old_ = -1;
    struct stat status_ = {};
    sigset_t signals_ = {};
};

}  // namespace kfl_tool

#endif
