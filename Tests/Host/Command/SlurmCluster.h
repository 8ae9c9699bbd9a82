#pragma once

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Support/MediaFiles.h"

extern char** environ;

namespace Quillmere::Velmira {

// A one-node Slurm cluster of this machine, private to the test: munged, slurmctld and slurmd run as the test's
// children, with their key, sockets, ports and state in a temporary folder; SLURM_CONF points the test's own sbatch
// and scontrol (and those of the velmira it runs) at it. Stopped by PID, jobs cancelled first.
class SlurmCluster {
public:
  SlurmCluster() {
    for (const char* tool : {"munged", "mungekey", "slurmctld", "slurmd", "sbatch"})
      if (std::system(("command -v " + std::string(tool) + " >/dev/null 2>&1").c_str()) != 0) return;
    mInstalled = true;
    mFolder = std::filesystem::temp_directory_path() / ("velmira-slurm-" + std::to_string(::getpid()));
    std::filesystem::create_directories(mFolder + "/munge");
    std::filesystem::permissions(mFolder, std::filesystem::perms(0755));  // munged checks its socket's folders
    std::filesystem::permissions(mFolder + "/munge", std::filesystem::perms(0755));
    if (std::system(("mungekey -c -k " + mFolder + "/munge/key").c_str()) != 0) return;
    mDaemons.push_back(start({"munged", "-F", "-f", "--socket=" + mFolder + "/munge/socket",
                              "--key-file=" + mFolder + "/munge/key", "--log-file=" + mFolder + "/munge/log",
                              "--pid-file=" + mFolder + "/munge/pid", "--seed-file=" + mFolder + "/munge/seed"}));
    writeFile(mFolder + "/slurm.conf", configuration());
    ::setenv("SLURM_CONF", (mFolder + "/slurm.conf").c_str(), 1);
    mDaemons.push_back(start({"slurmctld", "-D"}));
    mDaemons.push_back(start({"slurmd", "-D", "-N", "localhost"}));
    for (int i = 0; i < 100 && !mReady; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      mReady = std::system("sinfo -h -o %T 2>/dev/null | grep -qx idle") == 0;
    }
  }

  ~SlurmCluster() {
    if (mDaemons.size() == 3) {
      (void)std::system("scancel --user=$(id -un) >/dev/null 2>&1; scontrol shutdown >/dev/null 2>&1");
      for (std::size_t i = mDaemons.size(); i-- > 1;) stop(mDaemons[i], 50);
    }
    if (!mDaemons.empty()) stop(mDaemons.front(), 0);
    if (!mFolder.empty()) std::filesystem::remove_all(mFolder);
  }

  // Whether Slurm and munge are installed at all, and whether the cluster made of them came up.
  bool installed() const { return mInstalled; }
  bool ready() const { return mReady; }

private:
  static pid_t start(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    posix_spawnp(&pid, argv[0], &quiet, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&quiet);
    return pid;
  }

  // Waits up to `tenths` of a second for a daemon told to stop, then ends it.
  static void stop(pid_t pid, int tenths) {
    for (int i = 0; i < tenths && ::waitpid(pid, nullptr, WNOHANG) == 0; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (::kill(pid, SIGTERM) == 0) ::waitpid(pid, nullptr, 0);
  }

  static int freePort() {
    int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    ::bind(s, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(s, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(s);
    return ntohs(address.sin_port);
  }

  // proctrack/linuxproc: the cgroup tracker fails silently in a container. cons_tres by core: tasks run side by side.
  std::string configuration() const {
    std::string c = "ClusterName=velmira\nSlurmctldHost=localhost\nSlurmUser=root\nAuthType=auth/munge\n";
    c += "AuthInfo=socket=" + mFolder + "/munge/socket\nProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\n";
    c += "SelectType=select/cons_tres\nSelectTypeParameters=CR_Core\nMinJobAge=600\n";
    c += "SlurmctldPort=" + std::to_string(freePort()) + "\nSlurmdPort=" + std::to_string(freePort()) + "\n";
    for (const char* name : {"StateSaveLocation", "SlurmdSpoolDir"}) c += std::string(name) + "=" + mFolder + "\n";
    c += "SlurmctldPidFile=" + mFolder + "/ctld.pid\nSlurmdPidFile=" + mFolder + "/d.pid\n";
    c += "SlurmctldLogFile=" + mFolder + "/ctld.log\nSlurmdLogFile=" + mFolder + "/d.log\n";
    c += "NodeName=localhost NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN\n";
    return c + "PartitionName=main Nodes=localhost Default=YES MaxTime=INFINITE State=UP\n";
  }

  std::string mFolder;
  std::vector<pid_t> mDaemons;
  bool mInstalled = false;
  bool mReady = false;
};

}  // namespace Quillmere::Velmira
