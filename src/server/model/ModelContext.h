#pragma once

#include "server/model/ModelAddress.h"
#include "server/model/ModelClient.h"

#include <QDeadlineTimer>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

namespace quillmate::server
{

/// How many tokens a model reads and writes at once: what the command line says, else what the server tells (vLLM's
/// and llama.cpp's list of models, llama.cpp's properties, Ollama's running models and its model's own parameter), else
/// what it told earlier, else 4,096. Asked again after five minutes, since a server may be started anew, and after half
/// a minute where it could not tell. Any thread.
class ModelContext
{
public:
    static constexpr qsizetype untold = 4096;
    static constexpr std::chrono::minutes validity{5};
    static constexpr std::chrono::seconds shortValidity{30};
    using Log = std::function<void(const std::string&)>;

    /// `fixed` is the command line's number, 0 for none; the client must outlive this.
    ModelContext(ModelClient& client, ModelAddress address, std::string model, qsizetype fixed, Log log);

    /// Asks the server where that is due, in at most the client's limit for it.
    [[nodiscard]] qsizetype size(QDeadlineTimer end);
    /// The server has turned out to take no more than this; holds as long as an answer of the server's does.
    void learn(qsizetype tokens);
    /// The model has just written something, so it is loaded: a server that told nothing before is asked anew.
    void modelAnswered();

private:
    struct Told {
        qsizetype tokens = 0; ///< 0: the server does not say
        const char* source = "";
        bool passing = false; ///< nothing was learned this time: it is unreachable, or not ready
    };
    [[nodiscard]] Told ask(QDeadlineTimer end) const;
    [[nodiscard]] qsizetype bounded() const;
    /// Logs the line unless it was the last one.
    void say(const std::string& line);

    ModelClient& m_client;
    const ModelAddress m_address;
    const std::string m_model;
    const qsizetype m_fixed;
    const Log m_log;
    std::mutex m_mutex;
    qsizetype m_size = 0; ///< as the server told it last; 0: never
    QDeadlineTimer m_valid;
    QDeadlineTimer m_loaded; ///< runs while the model surely is
    bool m_mayTellLater = false;
    std::string m_said;
    qsizetype m_learned = 0;
    QDeadlineTimer m_learnedValid;
};

} // namespace quillmate::server
