// The precompiled header of the views: the Qt headers that most of them need, and nothing of ours.
#pragma once

#include <QAbstractTableModel>
#include <QPainter>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>
