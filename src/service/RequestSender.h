#pragma once

#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/text/print.h"
#include "service/Reachability.h"
#include "service/ReplyReader.h"

#include <functional>
#include <type_traits>
#include <utility>

namespace quillmate
{

/// Who wants something of the service. Only a person is told when it cannot be reached.
enum class RequestOrigin { Person, Program };

/// Sends a request; when its reply is there, prints what the reader has to say of it and hands on what it made of it,
/// once, on the network's thread. Returns at once. Any thread.
template<typename Record>
void sendRequest(const URLRequest& request, Reading<Record> (*read)(const ServiceReply& reply),
                 std::type_identity_t<std::function<void(Result<Record, ReplyFailure>)>> receive,
                 RequestOrigin origin = RequestOrigin::Person)
{
    URLSession::shared()
        .dataTask(request,
                  [read, receive = std::move(receive), origin](auto data, auto response, auto error) {
                      if (origin == RequestOrigin::Person) {
                          noteReachability(error);
                      }
                      Reading<Record> reading = read({std::move(data), std::move(response), std::move(error)});
                      // Where there was a body, the lines may quote it.
                      const bool quotes = reading.result || reading.result.error().stage >= ReplyStage::Parsing;
                      for (const std::string_view line : reading.lines) {
                          printLine({&line, 1}, quotes ? PrintedLine::Private : PrintedLine::Plain);
                      }
                      receive(std::move(reading.result));
                  })
        ->resume();
}

} // namespace quillmate
