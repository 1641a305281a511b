#pragma once
// The gorvan-cli command groups. Each registers its subcommands on the parser;
// a subcommand's callback runs the command and leaves its exit code in *result.

namespace CLI {
class App;
}

namespace gorvan::cli {

class CliContext;

void AddCatalogCommands(CLI::App& app, CliContext& ctx, int* result);  // create info ls dump check
void AddEditCommands(CLI::App& app, CliContext& ctx, int* result);     // category disc folder file password
void AddScanCommands(CLI::App& app, CliContext& ctx, int* result);     // scan id3
void AddExportCommands(CLI::App& app, CliContext& ctx, int* result);   // export
void AddMaintenanceCommands(CLI::App& app, CliContext& ctx, int* result);  // compact backup saveas merge
void AddSearchCommands(CLI::App& app, CliContext& ctx, int* result);   // search translate
void AddAppCommands(CLI::App& app, CliContext& ctx, int* result);  // settings integrate version-check send-error
void AddAudioCommands(CLI::App& app, CliContext& ctx, int* result);    // discid cddb drives eject watch

}  // namespace gorvan::cli
