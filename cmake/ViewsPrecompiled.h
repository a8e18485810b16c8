#pragma once

#include "CorePrecompiled.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QWidget>
