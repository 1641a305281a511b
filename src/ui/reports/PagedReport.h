#pragma once
// PagedReport: what the print preview shows and prints — a number of pages of
// one paper layout, each painted on demand. A report is immutable once made,
// so the preview may paint one page on the GUI thread while a print job
// paints others on its worker; a new paper layout makes a new report.
//
// Geometry: the painter's device is one sheet of layout() with the origin at
// the paper's top-left corner (a printer set to full page); a report scales
// by the device's resolution, so the same page paints on the screen, an image
// and a printer alike.

#include <QPageLayout>

class QPainter;

namespace gorvan::ui {

class PagedReport {
 public:
  virtual ~PagedReport() = default;
  virtual QPageLayout layout() const = 0;
  virtual int pageCount() const = 0;
  // REQUIRES: 0 <= page < pageCount(). Thread-safe: paints nothing shared.
  virtual void paintPage(QPainter& painter, int page) const = 0;
};

// Device pixels per point and per millimetre of painter's device.
double PixelsPerPoint(const QPainter& painter);
inline double PixelsPerMm(const QPainter& painter) { return PixelsPerPoint(painter) * 72.0 / 25.4; }

}  // namespace gorvan::ui
