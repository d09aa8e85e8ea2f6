#pragma once

#include "platform/Tasks.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// Runs one external tool to completion and hands back what it wrote to its standard output. For worker threads: it
// blocks for as long as the tool keeps its standard output open.
class NTSynchronousTask final : public std::enable_shared_from_this<NTSynchronousTask> {
public:
    // The whole output of the tool, empty when it wrote nothing; nothing at all when the tool could not be started, did
    // not take its input, or was seen to end with another status than 0, and when anything throws. Without input its
    // standard input stays open until the call returns. An absent folder means this process's own.
    static std::optional<std::string> task(const std::string& path, const std::optional<std::string>& directory,
                                           const std::vector<std::string>& withArgs,
                                           const std::optional<std::string>& input);

private:
    NTSynchronousTask();

    static std::optional<std::string> runToEnd(const std::string& path, const std::optional<std::string>& directory,
                                               const std::vector<std::string>& withArgs,
                                               const std::optional<std::string>& input);
    // False when the input could not be written.
    bool run(const std::string& path, const std::optional<std::string>& directory,
             const std::vector<std::string>& withArgs, const std::optional<std::string>& input);
    bool launch(const std::shared_ptr<platform::RunLoop>& loop);
    void waitForOutput(platform::RunLoop& loop) const;
    void waitForEndingTool(platform::RunLoop& loop) const;
    void taskOutputAvailable(std::string output);
    void taskDidTerminate(int status);

    platform::TaskDescription mv_task;
    std::shared_ptr<platform::Pipe> mv_outputPipe;
    std::shared_ptr<platform::Pipe> mv_inputPipe;
    std::optional<std::string> mv_output;
    bool mv_done = false;
    bool mv_terminated = false;
    int mv_result = 0;
};
