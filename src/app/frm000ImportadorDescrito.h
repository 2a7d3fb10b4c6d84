#pragma once
// The importer form of any link that needs nothing beyond what its
// descriptor declares: the frame's files and month rows, plus a check box
// for each of its options and a box for each valued option. The importer
// is built by the descriptor's factory from what the user chose.

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>

#include <map>
#include <string>

#include "app/MarcoImportador.h"
#include "importers/Descriptor.h"

namespace velmorant::app {

class frm000ImportadorDescrito : public MarcoImportador {
    Q_OBJECT
public:
    frm000ImportadorDescrito(Sesion& sesion, const DescriptorImportador& descriptor, QWidget* padre = nullptr);

    /// The files, the ticked boxes and the values of the option boxes.
    ArchivosImportacion Archivos() const override;

protected:
    std::unique_ptr<Importador> CreaImportador() override;
    const DescriptorImportador& descriptor() const { return descriptor_; }

private:
    const DescriptorImportador& descriptor_;
    std::map<std::string, QCheckBox*> casillas_;   // by command-line name
    std::map<std::string, QWidget*> parametros_;   // a QLineEdit or a QComboBox
};

}  // namespace velmorant::app
