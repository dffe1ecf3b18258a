#pragma once

#include "localservice/model/ModelAddress.h"
#include "localservice/model/ModelClient.h"

#include <QDeadlineTimer>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

namespace quillmate::localservice
{

/// How many tokens a model reads and writes at once: what the command line says, else what the server tells (vLLM's
/// and llama.cpp's list of models, llama.cpp's properties, Ollama's running models and its model's own parameter), else
/// 4,096. Asked again after five minutes, since a server may be started anew. Any thread.
class ModelContext
{
public:
    static constexpr qsizetype untold = 4096;
    static constexpr std::chrono::minutes validity{5};
    using Log = std::function<void(const std::string&)>;

    /// `fixed` is the command line's number, 0 for none; the client must outlive this.
    ModelContext(ModelClient& client, ModelAddress address, std::string model, qsizetype fixed, Log log);

    /// Asks the server where that is due, in at most the client's limit for it.
    [[nodiscard]] qsizetype size(QDeadlineTimer end);
    /// The server has turned out to take no more than this; holds as long as an answer of the server's does.
    void learn(qsizetype tokens);

private:
    struct Told {
        qsizetype tokens = 0; ///< 0: the server does not say
        const char* source = "";
        bool passing = false; ///< nothing was learned this time: it is unreachable, or not ready
    };
    [[nodiscard]] Told ask(QDeadlineTimer end) const;

    ModelClient& m_client;
    const ModelAddress m_address;
    const std::string m_model;
    const qsizetype m_fixed;
    const Log m_log;
    std::mutex m_mutex;
    qsizetype m_size = 0;
    QDeadlineTimer m_valid;
    qsizetype m_learned = 0;
    QDeadlineTimer m_learnedValid;
};

} // namespace quillmate::localservice
