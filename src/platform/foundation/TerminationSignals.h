#pragma once

#include <QObject>

namespace quillmate
{

/// Ends the application in order on SIGTERM, SIGINT and SIGHUP: its event loop returns 0. Should something hold up the
/// end, such as a reader of our output that reads no more, the process ends after 5 seconds all the same, with status
/// 0. Also ignores SIGPIPE, so that a reader that goes away is an error of the write and not the end of the process.
/// One per process; main thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

private:
    int m_readEnd = -1;
};

} // namespace quillmate
