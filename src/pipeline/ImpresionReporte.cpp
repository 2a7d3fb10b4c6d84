// Printing a report on pages of our own cutting. The toolkit's pagination
// moves each line of text that crosses the foot of a page to the next one,
// so a table row whose cells wrap to several lines ends on two pages. Here
// the document is laid out once as one long page at the page's width, and
// the pages are cut only between lines of text and between table rows; a
// table's header rows are drawn again at the top of each page it continues
// on, and every page bears its number.

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextLayout>
#include <QTextTable>
#include <QUrl>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "pipeline/Reportes.h"

namespace velmorant {

namespace {

// A strip of the long page that no page cut may go through: a line of text
// or a table row (rows joined by a cell that spans them).
struct Unidad {
    double arriba, abajo;
    int tabla = -1;            // index into the tables' header strips; -1 outside a table
    bool encabezado = false;   // one of its table's header rows
};

// A table's header rows, drawn again where the table goes on to a new page.
struct Encabezado {
    double arriba = 0, abajo = 0;
    double alto() const { return abajo - arriba; }
};

class Cortes {
public:
    explicit Cortes(QTextDocument& doc) : layout_(*doc.documentLayout()) {}

    void recorre(QTextFrame* marco) {
        for (auto it = marco->begin(); !it.atEnd(); ++it) {
            if (auto* tabla = qobject_cast<QTextTable*>(it.currentFrame())) {
                filas(tabla);
            } else if (it.currentFrame()) {
                recorre(it.currentFrame());
            } else if (it.currentBlock().isValid()) {
                lineas(it.currentBlock());
            }
        }
    }

    std::vector<Unidad> unidades;
    std::vector<Encabezado> encabezados;

private:
    QAbstractTextDocumentLayout& layout_;

    void lineas(const QTextBlock& bloque) {
        QRectF r = layout_.blockBoundingRect(bloque);
        QTextLayout* l = bloque.layout();
        for (int i = 0; l && i < l->lineCount(); ++i) {
            QTextLine linea = l->lineAt(i);
            unidades.push_back({r.top() + linea.y(), r.top() + linea.y() + linea.height()});
        }
        if (!l || l->lineCount() == 0) unidades.push_back({r.top(), r.bottom()});
    }

    // The top and bottom of what the cells of each row hold.
    void filas(QTextTable* tabla) {
        const int n = tabla->rows();
        if (n == 0) return;
        std::vector<double> arriba(static_cast<size_t>(n), 1e300), abajo(static_cast<size_t>(n), -1e300);
        std::vector<int> hasta(static_cast<size_t>(n));  // the last row joined to each by a spanning cell
        for (int f = 0; f < n; ++f) hasta[static_cast<size_t>(f)] = f;
        for (int f = 0; f < n; ++f)
            for (int c = 0; c < tabla->columns(); ++c) {
                QTextTableCell celda = tabla->cellAt(f, c);
                if (!celda.isValid() || celda.row() != f || celda.column() != c) continue;
                auto& h = hasta[static_cast<size_t>(f)];
                h = std::max(h, f + celda.rowSpan() - 1);
                for (auto it = celda.begin(); !it.atEnd(); ++it) {
                    QRectF r = it.currentFrame() ? layout_.frameBoundingRect(it.currentFrame())
                                                 : layout_.blockBoundingRect(it.currentBlock());
                    arriba[static_cast<size_t>(f)] = std::min(arriba[static_cast<size_t>(f)], r.top());
                    abajo[static_cast<size_t>(f)] = std::max(abajo[static_cast<size_t>(f)], r.bottom());
                }
            }
        // A row's strip runs from halfway between its content and the row
        // above to halfway to the row below: the cut falls in the padding.
        QRectF marco = layout_.frameBoundingRect(tabla);
        std::vector<double> limite(static_cast<size_t>(n) + 1);
        limite[0] = marco.top();
        limite[static_cast<size_t>(n)] = marco.bottom();
        for (int f = 1; f < n; ++f)
            limite[static_cast<size_t>(f)] = (abajo[static_cast<size_t>(f - 1)] + arriba[static_cast<size_t>(f)]) / 2;

        const int cabecera = std::min(tabla->format().headerRowCount(), n);
        const int indice = static_cast<int>(encabezados.size());
        encabezados.push_back({limite[0], limite[static_cast<size_t>(cabecera)]});
        for (int f = 0; f < n;) {
            int fin = f;
            for (int g = f; g <= fin && g < n; ++g) fin = std::max(fin, hasta[static_cast<size_t>(g)]);
            fin = std::min(fin, n - 1);
            unidades.push_back({limite[static_cast<size_t>(f)], limite[static_cast<size_t>(fin) + 1], indice, f < cabecera});
            f = fin + 1;
        }
    }
};

struct Pagina {
    double desde, hasta;
    int encabezado = -1;  // the header strip drawn above, if any
};

// Cuts the long page into pages of `alto`, never through a unit unless the
// unit alone is taller than a page.
std::vector<Pagina> CortaPaginas(const Cortes& c, double total, double alto) {
    std::vector<Pagina> paginas;
    Pagina actual{0, 0, -1};
    auto capacidad = [&] {
        double h = actual.encabezado >= 0 ? c.encabezados[static_cast<size_t>(actual.encabezado)].alto() : 0;
        return std::max(alto - h, alto / 4);
    };
    auto corta = [&](double y, int encabezadoSiguiente) {
        actual.hasta = y;
        paginas.push_back(actual);
        actual = {y, 0, encabezadoSiguiente};
    };
    for (const Unidad& u : c.unidades) {
        if (u.abajo <= actual.desde) continue;
        int siguiente = u.tabla >= 0 && !u.encabezado ? u.tabla : -1;
        while (u.abajo - actual.desde > capacidad()) {
            if (u.arriba > actual.desde + 0.5)
                corta(u.arriba, siguiente);
            else
                corta(actual.desde + capacidad(), siguiente);  // taller than a page: no other way
        }
    }
    actual.hasta = std::max(total, actual.desde);
    paginas.push_back(actual);
    return paginas;
}

}  // namespace

void ImprimeReporte(const Reporte& r, QPagedPaintDevice& dispositivo) {
    QPainter p(&dispositivo);
    if (!p.isActive()) throw std::runtime_error("No se pudo iniciar la impresión del reporte");
    QTextDocument doc;
    doc.documentLayout()->setPaintDevice(&dispositivo);
    doc.setBaseUrl(QUrl::fromLocalFile(QString::fromStdString(r.carpetaPlantilla)));
    doc.setHtml(QString::fromStdString(HtmlDeReporte(r)));
    const double ancho = dispositivo.width();
    doc.setTextWidth(ancho);

    QFontMetricsF metricas(doc.defaultFont(), &dispositivo);
    const double pie = metricas.height() * 2;
    const double alto = std::max(dispositivo.height() - pie, pie);

    Cortes cortes(doc);
    cortes.recorre(doc.rootFrame());
    std::sort(cortes.unidades.begin(), cortes.unidades.end(),
              [](const Unidad& a, const Unidad& b) { return a.arriba < b.arriba; });
    auto paginas = CortaPaginas(cortes, doc.size().height(), alto);

    for (size_t i = 0; i < paginas.size(); ++i) {
        if (i > 0) dispositivo.newPage();
        const Pagina& pag = paginas[i];
        double y = 0;
        if (pag.encabezado >= 0) {
            const Encabezado& e = cortes.encabezados[static_cast<size_t>(pag.encabezado)];
            p.save();
            p.translate(0, -e.arriba);
            doc.drawContents(&p, QRectF(0, e.arriba, ancho, e.alto()));
            p.restore();
            y = e.alto();
        }
        p.save();
        p.translate(0, y - pag.desde);
        doc.drawContents(&p, QRectF(0, pag.desde, ancho, pag.hasta - pag.desde));
        p.restore();
        p.setFont(doc.defaultFont());
        p.drawText(QRectF(0, dispositivo.height() - pie, ancho, pie), Qt::AlignRight | Qt::AlignBottom,
                   QString::number(static_cast<int>(i) + 1));
    }
}

}  // namespace velmorant
