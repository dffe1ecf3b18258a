#include "localservice/model/ModelContext.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>
#include <utility>

namespace quillmate::localservice
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr qsizetype smallest = 256; ///< a smaller number is taken for a mistake
constexpr qsizetype largest = 100'000'000;

/// Whether asking again would hardly bring another answer.
bool isFinal(const ModelResponse& response)
{
    const bool forNow = response.status >= 500 || response.status == 401 || response.status == 403 ||
                        response.status == 408 || response.status == 429;
    return response.problem == ModelResponse::Problem::None && !forNow;
}

Json objectIn(const ModelResponse& response)
{
    const bool good = response.problem == ModelResponse::Problem::None && response.status == 200;
    Json body = good ? Json::parse(response.body.begin(), response.body.end(), nullptr, false) : Json();
    return body.is_object() ? body : Json::object();
}

qsizetype sizeAt(const Json& object, const char* key)
{
    const auto found = object.is_object() ? object.find(key) : object.end();
    if (!object.is_object() || found == object.end() || !found->is_number()) {
        return 0;
    }
    const double size = found->get<double>();
    return size >= static_cast<double>(smallest) && size <= static_cast<double>(largest) ? static_cast<qsizetype>(size)
                                                                                         : 0;
}

Json memberOf(const Json& object, const char* key)
{
    const auto found = object.is_object() ? object.find(key) : object.end();
    return object.is_object() && found != object.end() ? *found : Json();
}

/// The entry of the array under `list` that has the model's name; Ollama adds ":latest" to a name without a tag.
Json entryOf(const Json& whole, const char* list, const std::string& model)
{
    const Json entries = memberOf(whole, list);
    for (const Json& entry : entries.is_array() ? entries : Json::array()) {
        for (const char* key : {"id", "name", "model"}) {
            const Json name = memberOf(entry, key);
            if (name == model || name == model + ":latest") {
                return entry;
            }
        }
    }
    return {};
}

/// "num_ctx" among a model's parameters, which Ollama gives as lines of a name, blanks and a value.
qsizetype contextParameter(const Json& details)
{
    static const std::regex line("(^|\n)num_ctx[ \t]+\"?([0-9]{1,9})");
    const Json parameters = memberOf(details, "parameters");
    std::smatch match;
    const std::string text = parameters.is_string() ? parameters.get<std::string>() : std::string();
    return std::regex_search(text, match, line) ? static_cast<qsizetype>(std::stoll(match[2])) : 0;
}

/// The most that a model can take, under "<architecture>.context_length".
qsizetype trainedContext(const Json& details)
{
    constexpr std::string_view end = ".context_length";
    const Json information = memberOf(details, "model_info");
    if (!information.is_object()) {
        return 0;
    }
    for (const auto& item : information.items()) {
        const std::string& key = item.key();
        if (key.size() > end.size() && std::string_view(key).substr(key.size() - end.size()) == end) {
            return sizeAt(information, key.c_str());
        }
    }
    return 0;
}

} // namespace

ModelContext::ModelContext(ModelClient& client, ModelAddress address, std::string model, qsizetype fixed, Log log)
    : m_client(client)
    , m_address(std::move(address))
    , m_model(std::move(model))
    , m_fixed(fixed)
    , m_log(std::move(log))
{
}

qsizetype ModelContext::size(QDeadlineTimer end)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_fixed > 0 || (m_size > 0 && !m_valid.hasExpired())) {
            const qsizetype size = m_fixed > 0 ? m_fixed : m_size;
            return m_learnedValid.hasExpired() ? size : std::min(size, m_learned);
        }
    }
    const Told told = ask(std::min(end, QDeadlineTimer(m_client.limits().contextQuestion)));
    const qsizetype size = told.tokens > 0 ? told.tokens : untold;
    const std::lock_guard lock(m_mutex);
    if (told.passing) {
        return m_size > 0 ? m_size : size;
    }
    if (size != m_size) {
        m_log(told.tokens > 0
                  ? "the language model's context has " + std::to_string(size) + " tokens, as " + told.source + " tells"
                  : "the language model's server does not tell its context; " + std::to_string(size) +
                        " tokens are counted with (--openai-context says otherwise)");
    }
    m_size = size;
    m_valid.setRemainingTime(validity);
    return m_learnedValid.hasExpired() ? size : std::min(size, m_learned);
}

void ModelContext::learn(qsizetype tokens)
{
    const std::lock_guard lock(m_mutex);
    m_learned = m_learnedValid.hasExpired() ? tokens : std::min(tokens, m_learned);
    m_learnedValid.setRemainingTime(validity);
}

ModelContext::Told ModelContext::ask(QDeadlineTimer end) const
{
    const ModelResponse models = m_client.get(m_address.models, end);
    if (!isFinal(models)) {
        return {0, "", true};
    }
    const Json listed = entryOf(objectIn(models), "data", m_model);
    if (const qsizetype size = sizeAt(listed, "max_model_len"); size > 0) {
        return {size, "the list of models (max_model_len)", false};
    }
    if (const qsizetype size = sizeAt(memberOf(listed, "meta"), "n_ctx"); size > 0) {
        return {size, "the list of models (n_ctx)", false};
    }
    const Json properties = objectIn(m_client.get(m_address.properties, end));
    if (const qsizetype size = sizeAt(memberOf(properties, "default_generation_settings"), "n_ctx"); size > 0) {
        return {size, "/props (n_ctx)", false};
    }
    const Json running = entryOf(objectIn(m_client.get(m_address.running, end)), "models", m_model);
    if (const qsizetype size = sizeAt(running, "context_length"); size > 0) {
        return {size, "/api/ps (context_length)", false};
    }
    const Json question = {{"model", m_model}};
    const auto body = QByteArray::fromStdString(question.dump(-1, ' ', false, Json::error_handler_t::replace));
    const Json details = objectIn(m_client.post(m_address.details, body, end));
    const qsizetype trained = trainedContext(details);
    if (const qsizetype size = contextParameter(details); size >= smallest) {
        return {trained > 0 ? std::min(size, trained) : size, "/api/show (num_ctx)", false};
    }
    // What a model was trained with is no promise that its server gives it that much, only that it is no more.
    if (trained > 0 && trained < untold) {
        return {trained, "/api/show (context_length)", false};
    }
    return {};
}

} // namespace quillmate::localservice
