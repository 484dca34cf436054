#include "platform/gridannouncer.h"

#include "platform/grid.h"

#include <QMetaObject>

namespace adjustacc::platform {

void GridAnnouncer::setFirstVisibleRow(int row) {
  const int clamped = qBound(0, row, qMax(0, m_grid.rows() - 1));
  if (clamped == m_firstVisible) {
    return;
  }
  m_firstVisible = clamped;
  Q_EMIT m_grid.firstVisibleRowChanged(m_firstVisible);
}

void GridAnnouncer::setRedraw(bool redraw) {
  if (m_redraw == redraw) {
    return;
  }
  m_redraw = redraw;
  Q_EMIT m_grid.redrawChanged(m_redraw);
  if (!m_redraw) {
    return;
  }
  if (m_resetQueued) {
    resetRows();
  } else if (m_cellsHeld) {
    m_cellsHeld = false;
    cellsChanged(0, m_viewRows - 1);
  }
}

void GridAnnouncer::aboutToReset() {
  Q_EMIT m_grid.aboutToReset();
}

void GridAnnouncer::wasReset(bool rows) {
  m_viewRows = m_grid.rows();
  if (rows) {
    m_resetQueued = false;
    m_cellsHeld = false;
    m_firstVisible = qBound(0, m_firstVisible, qMax(0, m_viewRows - 1));
  }
  Q_EMIT m_grid.wasReset();
  if (rows) {
    currentMoved();
  }
}

void GridAnnouncer::resetLater() {
  if (m_resetQueued) {
    return;
  }
  m_resetQueued = true;
  QMetaObject::invokeMethod(
      &m_grid,
      [this] {
        if (m_resetQueued) {
          resetRows();
        }
      },
      Qt::QueuedConnection);
}

void GridAnnouncer::aboutToInsert(int at) {
  Q_EMIT m_grid.aboutToInsertRows(at, at);
}

void GridAnnouncer::inserted(int at) {
  m_viewRows = m_grid.rows();
  Q_EMIT m_grid.rowsInserted(at, at);
  if (at < m_firstVisible) {
    ++m_firstVisible;
  }
  currentMoved();
}

void GridAnnouncer::aboutToRemove(int at) {
  Q_EMIT m_grid.aboutToRemoveRows(at, at);
}

void GridAnnouncer::removed(int at) {
  m_viewRows = m_grid.rows();
  Q_EMIT m_grid.rowsRemoved(at, at);
  if (at < m_firstVisible) {
    --m_firstVisible;
  }
  m_firstVisible = qBound(0, m_firstVisible, qMax(0, m_viewRows - 1));
  currentMoved();
}

void GridAnnouncer::cellsChanged(int firstRow, int lastRow) {
  // Only rows the view has been told about can be redrawn; the others come with their announcement.
  firstRow = qMax(0, firstRow);
  lastRow = qMin(lastRow, m_viewRows - 1);
  if (lastRow < firstRow) {
    return;
  }
  if (!m_redraw) {
    m_cellsHeld = true;
    return;
  }
  Q_EMIT m_grid.cellsChanged(firstRow, lastRow);
}

void GridAnnouncer::allCellsChanged() {
  cellsChanged(0, m_viewRows - 1);
}

void GridAnnouncer::currentMoved() {
  if (m_currentQueued) {
    return;
  }
  m_currentQueued = true;
  // A walk moves the row many times; the view hears once, where the walk left it.
  QMetaObject::invokeMethod(
      &m_grid,
      [this] {
        m_currentQueued = false;
        const int now = m_grid.row();
        if (now != m_announcedRow) {
          m_announcedRow = now;
          Q_EMIT m_grid.currentRowChanged(now);
        }
      },
      Qt::QueuedConnection);
}

}  // namespace adjustacc::platform
