#pragma once

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>

/// A server on the loopback that keeps what it is asked and gives one answer to everything.
class LoopbackServer : public QTcpServer {
 public:
  enum Ending { Closes, StaysOpen };
  explicit LoopbackServer(const QByteArray& answer, Ending ending = Closes) {
    if (!listen(QHostAddress::LocalHost)) ADD_FAILURE() << "cannot listen";
    connect(this, &QTcpServer::newConnection, this, [this, answer, ending] {
      QTcpSocket* const socket = nextPendingConnection();
      ++connections;
      connect(socket, &QTcpSocket::readyRead, this, [this, socket, answer, ending] {
        request += socket->readAll();
        if (!request.contains("\r\n\r\n") || answer.isEmpty()) return;
        socket->write(answer);
        if (ending == Closes) socket->disconnectFromHost();
      });
    });
  }
  QByteArray host() const { return "127.0.0.1:" + QByteArray::number(serverPort()); }

  QByteArray request;
  int connections = 0;
};

/// An HTTP answer, complete.
inline QByteArray http_answer(const char* status, const QByteArray& body, const QByteArray& headers = {}) {
  return QByteArray("HTTP/1.1 ") + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
         headers + "\r\n" + body;
}

inline QByteArray first_line(const QByteArray& request) {
  return request.left(request.indexOf("\r\n"));
}
