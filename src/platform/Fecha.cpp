#include "platform/Fecha.h"

#include <chrono>
#include <cstdio>

namespace velmorant {

namespace {
// Howard Hinnant's civil-from-days and days-from-civil.
long DiasDesdeCivil(int y, int m, int d) {
    y -= m <= 2;
    const long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * static_cast<unsigned>(m + (m > 2 ? -3 : 9)) + 2) / 5 + static_cast<unsigned>(d) - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long>(doe) - 719468;
}

Fecha CivilDesdeDias(long z) {
    z += 719468;
    const long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long y = static_cast<long>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned d = doy - (153 * mp + 2) / 5 + 1;
    const unsigned m = mp < 10 ? mp + 3 : mp - 9;
    return Fecha(static_cast<int>(y + (m <= 2)), static_cast<int>(m), static_cast<int>(d));
}

const long kDiasEpocaSerial = DiasDesdeCivil(1899, 12, 30);
}  // namespace

bool Fecha::EsBisiesto(int a) { return (a % 4 == 0 && a % 100 != 0) || a % 400 == 0; }

int Fecha::DiasDelMes(int anio, int mes) {
    static const int dias[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (mes < 1 || mes > 12) return 0;
    return mes == 2 && EsBisiesto(anio) ? 29 : dias[mes - 1];
}

bool Fecha::valida() const {
    return anio_ >= 100 && anio_ <= 9999 && mes_ >= 1 && mes_ <= 12 && dia_ >= 1 && dia_ <= DiasDelMes(anio_, mes_);
}

// Every voucher line binds its date as this text: written digit by digit,
// with the formatted print kept for values no calendar date has.
std::string Fecha::iso() const {
    if (anio_ < 0 || anio_ > 9999 || mes_ < 0 || mes_ > 99 || dia_ < 0 || dia_ > 99) {
        char b[40];
        std::snprintf(b, sizeof b, "%04d-%02d-%02d", anio_, mes_, dia_);
        return b;
    }
    std::string r = "0000-00-00";
    r[0] = static_cast<char>('0' + anio_ / 1000);
    r[1] = static_cast<char>('0' + anio_ / 100 % 10);
    r[2] = static_cast<char>('0' + anio_ / 10 % 10);
    r[3] = static_cast<char>('0' + anio_ % 10);
    r[5] = static_cast<char>('0' + mes_ / 10);
    r[6] = static_cast<char>('0' + mes_ % 10);
    r[8] = static_cast<char>('0' + dia_ / 10);
    r[9] = static_cast<char>('0' + dia_ % 10);
    return r;
}

std::string Fecha::mmddaaaa() const {
    char b[16];
    std::snprintf(b, sizeof b, "%02d/%02d/%04d", mes_, dia_, anio_);
    return b;
}

std::string Fecha::ddmmaaaa() const {
    char b[16];
    std::snprintf(b, sizeof b, "%02d/%02d/%04d", dia_, mes_, anio_);
    return b;
}

std::optional<Fecha> Fecha::desdeIso(std::string_view t) {
    if (t.size() < 10 || t[4] != '-' || t[7] != '-') return std::nullopt;
    auto num = [&](size_t a, size_t n) {
        int v = 0;
        for (size_t i = a; i < a + n; ++i) {
            if (t[i] < '0' || t[i] > '9') return -1;
            v = v * 10 + (t[i] - '0');
        }
        return v;
    };
    Fecha f(num(0, 4), num(5, 2), num(8, 2));
    if (!f.valida()) return std::nullopt;
    return f;
}

Fecha Fecha::desdeSerial(long serial) { return CivilDesdeDias(kDiasEpocaSerial + serial); }

long Fecha::serial() const { return DiasDesdeCivil(anio_, mes_, dia_) - kDiasEpocaSerial; }

Fecha Fecha::hoy() {
    auto ahora = std::chrono::system_clock::now();
    std::time_t t = std::chrono::system_clock::to_time_t(ahora);
    std::tm local{};
    localtime_r(&t, &local);
    return Fecha(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

}  // namespace velmorant
