#pragma once

#include "platform/base/Console.h"
#include "platform/base/DispatchQueue.h"
#include "store/PhotoModel.h"
#include "watch/ContactSheet.h"

#include <atomic>
#include <filesystem>
#include <memory>

namespace skyflare {

/// Writes stored photos into a folder, each as a PNG named by its time, and a contact sheet at the end.
///
/// Threads: called on main; reads and writes on a queue of its own. A photo that cannot be written is
/// reported on the console and the others go on.
/// Borrows its console.
class PhotoExport {
public:
    /// Makes the folder, and tries whether it can be written to.
    static Result<std::unique_ptr<PhotoExport>> into(const std::filesystem::path &folder,
                                                     QueueFactory &queues, Console &console);

    void add(const PhotoModel &photo);

    /// Writes the contact sheet, if there are photos, and then calls `done` on the export's own queue.
    void finish(std::function<void()> done);

    [[nodiscard]] bool failed() const { return failed_; }
    [[nodiscard]] const std::filesystem::path &folder() const { return folder_; }

private:
    PhotoExport(std::filesystem::path folder, QueueFactory &queues, Console &console);

    const std::filesystem::path folder_;
    Console &console_;
    ContactSheet sheet_; // on queue_
    std::atomic<bool> failed_ = false;
    std::shared_ptr<SerialQueue> queue_;

    void write(const PhotoModel &photo);
    void writeSheet();
    void report(const Error &error);
};

} // namespace skyflare
