#pragma once

#include <QCoro/QCoroTask>

#include <QCoreApplication>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
